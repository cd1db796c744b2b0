#include "QVLPropertyCollection.h"

#include "QVLLogMacros.h"
#include "QVLPublished.h"

#include <algorithm>
#include <iterator>
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

namespace {

using Entry = QVLJSONDictionary::Entry;

bool comesBefore(const Entry& a, const Entry& b) {
    return a.key < b.key;
}

bool comesBeforeKey(const Entry& item, std::string_view key) {
    return item.key.text() < key;
}

template <class Items>
auto lowerBound(Items& items, std::string_view key) {
    return std::lower_bound(items.begin(), items.end(), key, comesBeforeKey);
}

/// What was last reported, in the order of the keys. Main thread; changed in place, since most changes are small.
class Snapshot {
public:
    [[nodiscard]] const Entry* begin() const { return m_items.data(); }
    [[nodiscard]] const Entry* end() const { return m_items.data() + m_items.size(); }

    [[nodiscard]] QVLJSONValue valueForKey(std::string_view key) const {
        const auto position = lowerBound(m_items, key);
        return position != m_items.end() && position->key == key ? position->value : QVLJSONValue();
    }

    /// Takes over the changes, which stand in the order of their keys, all or none; nothing removes an item.
    void apply(const std::vector<Entry>& changes) {
        std::vector<Entry> added;
        std::copy_if(changes.begin(), changes.end(), std::back_inserter(added), [this](const Entry& change) {
            return !change.value.isNothing() && valueForKey(change.key).isNothing();
        });
        m_items.reserve(m_items.size() + added.size());
        for (const Entry& change : changes) {
            const auto position = lowerBound(m_items, change.key);
            if (position != m_items.end() && position->key == change.key) {
                position->value = change.value;
            }
        }
        std::erase_if(m_items, [](const Entry& item) { return item.value.isNothing(); });
        insert(std::move(added));
    }

private:
    void insert(std::vector<Entry> added) {
        const auto oldCount = static_cast<std::ptrdiff_t>(m_items.size());
        m_items.insert(m_items.end(), std::make_move_iterator(added.begin()), std::make_move_iterator(added.end()));
        if (oldCount > 0 && !added.empty()) {
            std::inplace_merge(m_items.begin(), m_items.begin() + oldCount, m_items.end(), comesBefore);
        }
    }

    std::vector<Entry> m_items;
};

QVLJSONDictionary userDefaultsUnderPrefix(const std::string& prefix) {
    const QVLJSONDictionary all = QVLUserDefaults::standardUserDefaults()->dictionaryRepresentation();
    std::vector<Entry> found;
    for (auto entry = all.lowerBound(prefix); entry != all.end() && entry->key.text().starts_with(prefix); ++entry) {
        found.push_back({entry->key.text().substr(prefix.size()), entry->value});
    }
    return QVLJSONDictionary(std::move(found));
}

/// Walks both in the order of their keys and hands over each key with both values, nothing where one lacks it.
template <class Visit>
void forEachKeyOfBoth(const QVLJSONDictionary& current, const Snapshot& previous, Visit visit) {
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

struct QVLPropertyCollection::State {
    QVLPublished<Layers> layers;
    Snapshot snapshot;
};

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
    report(changesSinceReport());
}

std::vector<Entry> QVLPropertyCollection::changesSinceReport() const {
    std::vector<Entry> changes;
    forEachKeyOfBoth(collectionWithOverrides(), m_state->snapshot,
                     [&](const QVLJSONString& key, const QVLJSONValue& now, const QVLJSONValue& before) {
                         if (!considerItem(now, before)) {
                             changes.push_back({key, now.copy()});
                         }
                     });
    return changes;
}

void QVLPropertyCollection::processChangedItemForKey(const QVLJSONString& key) {
    QVL_ASSERT_MAIN_THREAD(this);
    const QVLJSONValue now = mergedValueForKey(key);
    const QVLJSONValue before = m_state->snapshot.valueForKey(key);
    const bool isAnywhere = !now.isNothing() || !before.isNothing();
    if (isAnywhere && !considerItem(now, before)) {
        report({{key, now.copy()}});
    }
}

void QVLPropertyCollection::report(const std::vector<Entry>& changes) {
    if (changes.empty()) {
        return;
    }
    // A failure until here leaves everything to the next look.
    willReport(changes);
    m_state->snapshot.apply(changes);
    std::vector<std::string> changedKeys;
    changedKeys.reserve(changes.size());
    for (const Entry& change : changes) {
        changedKeys.push_back(change.key.text());
    }
    if (const auto delegate = m_delegate.lock()) {
        delegate->collection(*this, changedKeys);
    }
}

void QVLPropertyCollection::willReport(const std::vector<Entry>& /*changes*/) {}

bool QVLPropertyCollection::considerItem(const QVLJSONValue& item, const QVLJSONValue& sameAsItem) const {
    return !item.isNothing() && item == sameAsItem;
}
