#include "QVLPropertyCollection.h"

#include "QVLLogMacros.h"
#include "QVLPublished.h"

#include <utility>

struct QVLPropertyCollection::Layers {
    QVLJSONDictionary collection;
    QVLJSONDictionary collectionOverrides;
    std::optional<QVLJSONDictionary> defaultsOverrides;
    std::string overrideDefaultsPrefix;
    bool pretendIsEmpty = false;
    // The three layers as one, made when a layer changes: readers come far more often than changes.
    QVLJSONDictionary merged;

    void merge() {
        const bool hasDefaults = defaultsOverrides && !overrideDefaultsPrefix.empty();
        merged = hasDefaults ? QVLJSONDictionary::merged(collection, *defaultsOverrides) : collection;
        merged = QVLJSONDictionary::merged(merged, collectionOverrides);
    }
    [[nodiscard]] bool mayFindDefaults() const { return !overrideDefaultsPrefix.empty() && !defaultsOverrides; }
};

struct QVLPropertyCollection::State {
    QVLPublished<Layers> layers;
    QVLPublished<QVLJSONDictionary> snapshot;
};

namespace {

using Entry = QVLJSONDictionary::Entry;

QVLJSONDictionary userDefaultsUnderPrefix(const std::string& prefix) {
    const QVLJSONDictionary all = QVLUserDefaults::standardUserDefaults()->dictionaryRepresentation();
    std::vector<Entry> found;
    for (auto entry = all.lowerBound(prefix); entry != all.end() && entry->key.text().starts_with(prefix); ++entry) {
        found.push_back({entry->key.text().substr(prefix.size()), entry->value});
    }
    return QVLJSONDictionary(std::move(found));
}

/// Walks two dictionaries in the order of their keys and hands over each key with both values, nothing where one lacks
/// it.
template <class Visit>
void forEachKeyOfBoth(const QVLJSONDictionary& current, const QVLJSONDictionary& previous, Visit visit) {
    static const QVLJSONValue kNothing{};
    auto ours = current.begin();
    auto theirs = previous.begin();
    while (ours != current.end() || theirs != previous.end()) {
        const int order = ours == current.end()      ? 1
                          : theirs == previous.end() ? -1
                                                     : ours->key.text().compare(theirs->key.text());
        const Entry& entry = order <= 0 ? *ours : *theirs;
        visit(entry.key, order <= 0 ? ours->value : kNothing, order >= 0 ? theirs->value : kNothing);
        ours += order <= 0 ? 1 : 0;
        theirs += order >= 0 ? 1 : 0;
    }
}

} // namespace

QVLPropertyCollectionDelegate::~QVLPropertyCollectionDelegate() = default;

std::shared_ptr<QVLPropertyCollection> QVLPropertyCollection::init() {
    return std::shared_ptr<QVLPropertyCollection>(new QVLPropertyCollection);
}

QVLPropertyCollection::QVLPropertyCollection() : m_state(std::make_unique<State>()) {}

QVLPropertyCollection::~QVLPropertyCollection() = default;

QVLJSONDictionary QVLPropertyCollection::collection() const {
    return m_state->layers.load()->collection;
}

void QVLPropertyCollection::setCollection(const QVLJSONDictionary& collection) {
    m_state->layers.update([&](Layers& layers) {
        layers.collection = collection;
        layers.merge();
    });
    processChangedCollectionItems();
}

QVLJSONDictionary QVLPropertyCollection::collectionOverrides() const {
    return m_state->layers.load()->collectionOverrides;
}

void QVLPropertyCollection::setCollectionOverrides(const QVLJSONDictionary& overrides) {
    m_state->layers.update([&](Layers& layers) {
        layers.collectionOverrides = overrides;
        layers.merge();
    });
    processChangedCollectionItems();
}

bool QVLPropertyCollection::pretendIsEmpty() const {
    return m_state->layers.load()->pretendIsEmpty;
}

void QVLPropertyCollection::setPretendIsEmpty(bool pretendIsEmpty) {
    if (pretendIsEmpty == this->pretendIsEmpty()) {
        return;
    }
    m_state->layers.update([&](Layers& layers) { layers.pretendIsEmpty = pretendIsEmpty; });
    processChangedCollectionItems();
}

std::string QVLPropertyCollection::overrideDefaultsPrefix() const {
    return m_state->layers.load()->overrideDefaultsPrefix;
}

void QVLPropertyCollection::setOverrideDefaultsPrefix(const std::string& prefix) {
    m_state->layers.update([&](Layers& layers) {
        layers.overrideDefaultsPrefix = prefix;
        layers.merge();
    });
}

std::shared_ptr<QVLPropertyCollectionDelegate> QVLPropertyCollection::delegate() const {
    return m_delegate.lock();
}

void QVLPropertyCollection::setDelegate(const std::weak_ptr<QVLPropertyCollectionDelegate>& delegate) {
    m_delegate = delegate;
}

std::vector<std::string> QVLPropertyCollection::collectionKeys() const {
    return collectionWithOverrides().allKeys();
}

QVLJSONValue QVLPropertyCollection::mergedValueForKey(std::string_view key) const {
    return collectionWithOverrides().valueForKey(key);
}

QVLJSONDictionary QVLPropertyCollection::collectionWithOverrides() const {
    if (pretendIsEmpty()) {
        // Without a merge nobody looks for overrides in the user defaults.
        return {};
    }
    const std::shared_ptr<const Layers> current = layers();
    return current->pretendIsEmpty ? QVLJSONDictionary() : current->merged;
}

std::optional<QVLJSONDictionary> QVLPropertyCollection::defaultOverrides() const {
    const std::shared_ptr<const Layers> current = layers();
    return current->overrideDefaultsPrefix.empty() ? std::nullopt : current->defaultsOverrides;
}

std::shared_ptr<const QVLPropertyCollection::Layers> QVLPropertyCollection::layers() const {
    auto current = m_state->layers.load();
    if (!current->mayFindDefaults()) {
        return current;
    }
    const QVLJSONDictionary found = userDefaultsUnderPrefix(current->overrideDefaultsPrefix);
    if (found.isEmpty()) {
        return current;
    }
    bool isFirst = false;
    m_state->layers.update([&](Layers& layers) {
        // Another thread may have found them in the meantime; theirs stay.
        isFirst = !layers.defaultsOverrides;
        if (isFirst) {
            layers.defaultsOverrides = found;
            layers.merge();
        }
    });
    if (isFirst) {
        QVL_LOG_INFO(this, "Overriding following quorvel values from command line: %@", found);
    }
    return m_state->layers.load();
}

void QVLPropertyCollection::processChangedCollectionItems() {
    QVL_ASSERT_MAIN_THREAD(this);
    const std::vector<std::string> changedKeys = refreshSnapshot();
    if (changedKeys.empty()) {
        return;
    }
    if (const auto delegate = m_delegate.lock()) {
        delegate->collection(*this, changedKeys);
    }
}

std::vector<std::string> QVLPropertyCollection::refreshSnapshot() {
    const QVLJSONDictionary previous = reportedItems();
    const QVLJSONDictionary current = collectionWithOverrides();
    std::vector<std::string> changedKeys;
    std::vector<Entry> snapshot;
    snapshot.reserve(current.count());
    forEachKeyOfBoth(current, previous,
                     [&](const QVLJSONString& key, const QVLJSONValue& now, const QVLJSONValue& before) {
                         const bool isSame = considerItem(now, before);
                         if (!isSame) {
                             changedKeys.push_back(key.text());
                         }
                         // What is judged the same stays as it was reported, a missing entry included.
                         snapshot.push_back({key, isSame ? before : now.copy()});
                     });
    if (!changedKeys.empty()) {
        m_state->snapshot.store(QVLJSONDictionary(std::move(snapshot)));
    }
    return changedKeys;
}

QVLJSONDictionary QVLPropertyCollection::reportedItems() const {
    return *m_state->snapshot.load();
}

bool QVLPropertyCollection::considerItem(const QVLJSONValue& item, const QVLJSONValue& sameAsItem) const {
    return !item.isNothing() && item == sameAsItem;
}
