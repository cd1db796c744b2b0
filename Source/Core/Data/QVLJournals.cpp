#include "QVLJournals.h"

#include "QVLDateFormatter.h"
#include "QVLJournalPages.h"
#include "QVLLogMacros.h"

#include <utility>

namespace {

constexpr const char* kObsoleteLastTimeShown = "lastTimeShown";
constexpr const char* kObsoleteShownCount = "shownCount";
constexpr const char* kObsoleteOptedOut = "optedOut";

// The compact text of the file form around the two collections, as the writer would make it.
constexpr const char* kTextBeforeEvents = R"({"__version__":1,"events":)";
constexpr const char* kTextBeforeFlags = R"(,"flags":)";
constexpr const char* kTextAfterFlags = "}";
constexpr std::size_t kLongestFrame = 64;

template <class Record>
constexpr QVLRecordClass journalClassOf(const char* name) {
    return {name,
            [](const QVLJSONValue& JSONObject) -> std::shared_ptr<QVLJSONSerializable> {
                return Record::initWithQVLJSONObject(JSONObject);
            },
            []() -> std::shared_ptr<QVLJSONSerializable> { return Record::init(); },
            /*isJournalClass=*/true};
}

constexpr QVLRecordClass kEventClass = journalClassOf<QVLJournalEvent>("QVLJournalEvent");
constexpr QVLRecordClass kFlagClass = journalClassOf<QVLJournalFlag>("QVLJournalFlag");

QVLJSONValue fileForm(const QVLJSONValue& events, const QVLJSONValue& flags) {
    return QVLJSONDictionary{{kQVLJournalsJSONKeyVersion, kQVLJournalsJSONCurentVersion},
                             {kQVLJournalsJSONKeyEvents, events},
                             {kQVLJournalsJSONKeyFlags, flags}};
}

/// The members of the older form are read as they stand; one of another kind has no such operation.
[[noreturn]] void refuse(const QVLJSONValue& value, const char* operation) {
    throw QVLUnrecognizedOperationError(value.description(), operation);
}

QVLJSONValue numberOf(const QVLJSONValue& value, const char* operation) {
    if (!value.isNumber()) {
        refuse(value, operation);
    }
    return value;
}

std::shared_ptr<QVLJournalEvent> eventFromObsolete(const QVLJSONDictionary& entry) {
    const QVLJSONValue lastTimeShown = entry.valueForKey(kObsoleteLastTimeShown);
    const QVLJSONValue shownCount = entry.valueForKey(kObsoleteShownCount);
    if (lastTimeShown.isNothing() || shownCount.isNothing()) {
        return nullptr;
    }
    if (!lastTimeShown.isString()) {
        refuse(lastTimeShown, "length");
    }
    const auto time = QVLDateFormatter::sharedFormatter().dateFromString(lastTimeShown.stringView());
    std::shared_ptr<QVLJournalEvent> event = QVLJournalEvent::init();
    event->setFirstTime(time);
    event->setLastTime(time);
    event->setCount(numberOf(shownCount, "unsignedIntegerValue").unsignedValue());
    return event;
}

/// Its time is the time of the migration, since the older form had none.
std::shared_ptr<QVLJournalFlag> flagFromObsolete(const QVLJSONDictionary& entry) {
    const QVLJSONValue optedOut = entry.valueForKey(kObsoleteOptedOut);
    if (optedOut.isNothing()) {
        return nullptr;
    }
    std::shared_ptr<QVLJournalFlag> flag = QVLJournalFlag::init();
    flag->updateFlag(numberOf(optedOut, "boolValue").qvl_castToBoolValue());
    return flag;
}

} // namespace

QVLJournalsDelegate::~QVLJournalsDelegate() = default;

QVLJournals::QVLJournals()
    : m_eventCollection(QVLJournalCollection::initWithJournalClass(kEventClass)),
      m_flagCollection(QVLJournalCollection::initWithJournalClass(kFlagClass)) {}

std::shared_ptr<QVLJournals> QVLJournals::initWithQVLJSONObject(const QVLJSONValue& JSONObject) {
    std::shared_ptr<QVLJournals> journals(new QVLJournals);
    journals->m_eventCollection->setDelegate(journals);
    journals->m_flagCollection->setDelegate(journals);
    journals->loadFromJSONObject(JSONObject);
    return journals;
}

std::shared_ptr<QVLJournalEvent> QVLJournals::eventForKey(const std::string& key) {
    return std::dynamic_pointer_cast<QVLJournalEvent>(m_eventCollection->nonNullObjectForKey(key));
}

std::shared_ptr<QVLJournalFlag> QVLJournals::flagForKey(const std::string& key) {
    return std::dynamic_pointer_cast<QVLJournalFlag>(m_flagCollection->nonNullObjectForKey(key));
}

void QVLJournals::triggerSessionEventForKey(const std::string& key) {
    const std::shared_ptr<QVLJournals> self = shared_from_this();
    const std::shared_ptr<QVLJournalEvent> event = eventForKey(key);
    if (!event || (m_triggeredSessionEvents.contains(key) && !event->isEmpty())) {
        return;
    }
    m_triggeredSessionEvents.insert(key);
    event->trigger();
}

std::shared_ptr<QVLEventSessionLink> QVLJournals::eventSessionLinkForKey(const std::string& key) {
    if (auto link = m_eventSessionLinks[key].lock()) {
        return link;
    }
    auto link = std::make_shared<QVLEventSessionLink>();
    m_eventSessionLinks[key] = link;
    triggerSessionEventForKey(key);
    return link;
}

void QVLJournals::triggerSessionEvents() {
    // Whoever is told of a change may drop these journals; so below, wherever one change follows another.
    const std::shared_ptr<QVLJournals> self = shared_from_this();
    m_triggeredSessionEvents.clear();
    std::erase_if(m_eventSessionLinks, [](const auto& link) { return link.second.expired(); });
    // A copy, since whoever is told of a trigger may link further keys.
    for (const auto& [key, link] : std::map(m_eventSessionLinks)) {
        if (!link.expired()) {
            triggerSessionEventForKey(key);
        }
    }
}

void QVLJournals::reset() {
    const std::shared_ptr<QVLJournals> self = shared_from_this();
    m_eventCollection->setCollection({});
    m_flagCollection->setCollection({});
}

QVLJSONValue QVLJournals::qvl_JSONObject() const {
    return fileForm(m_eventCollection->nonEmptyCollection().qvl_JSONObject(),
                    m_flagCollection->nonEmptyCollection().qvl_JSONObject());
}

QVLJSONValue QVLJournals::publishedJSONObject() const {
    return fileForm(m_eventCollection->publishedRecords().dictionary(),
                    m_flagCollection->publishedRecords().dictionary());
}

QVLJSONWriteResult QVLJournals::textToSave() const {
    const bool isAllPublished = !m_eventCollection->mayHoldUnseenChanges() && !m_flagCollection->mayHoldUnseenChanges();
    return isAllPublished ? publishedText() : QVLJSONSerialization::dataWithJSONObject(qvl_JSONObject());
}

QVLJSONWriteResult QVLJournals::publishedText() const {
    const QVLJournalPages events = m_eventCollection->publishedRecords();
    const QVLJournalPages flags = m_flagCollection->publishedRecords();
    if (!events.isWritable() || !flags.isWritable()) {
        return QVLJSONSerialization::dataWithJSONObject(publishedJSONObject());
    }
    std::string text;
    text.reserve(kLongestFrame + events.compactTextSize() + flags.compactTextSize());
    text += kTextBeforeEvents;
    events.appendCompactText(text);
    text += kTextBeforeFlags;
    flags.appendCompactText(text);
    text += kTextAfterFlags;
    return {std::move(text), {}};
}

bool QVLJournals::loadFromJSONObject(const QVLJSONValue& JSONObject) {
    const std::shared_ptr<QVLJournals> self = shared_from_this();
    if (!JSONObject.isDictionary()) {
        QVL_LOG_ERROR(this, "Bad JSONObject: %@", JSONObject);
        return false;
    }
    const QVLJSONDictionary members = JSONObject.dictionaryOrEmpty();
    const QVLJSONValue version = members.valueForKey(kQVLJournalsJSONKeyVersion);
    if (version.isNothing()) {
        return loadFromObsoleteJSONObject(members);
    }
    if (!version.isNumber() || version.unsignedValue() != kQVLJournalsJSONCurentVersion) {
        QVL_LOG_ERROR(this, "Could not load journals form JSONObject: (%@)", JSONObject);
        return false;
    }
    const auto events =
        QVLJSONDictionary::dictionaryWithQVLJSONObject(members.valueForKey(kQVLJournalsJSONKeyEvents), kEventClass);
    m_eventCollection->setCollection(events.value_or(QVLJSONDictionary()));
    const auto flags =
        QVLJSONDictionary::dictionaryWithQVLJSONObject(members.valueForKey(kQVLJournalsJSONKeyFlags), kFlagClass);
    m_flagCollection->setCollection(flags.value_or(QVLJSONDictionary()));
    return true;
}

bool QVLJournals::loadFromObsoleteJSONObject(const QVLJSONDictionary& JSONObject) {
    std::vector<QVLJSONDictionary::Entry> events;
    std::vector<QVLJSONDictionary::Entry> flags;
    for (const QVLJSONDictionary::Entry& member : JSONObject) {
        if (!member.value.isDictionary()) {
            refuse(member.value, "objectForKeyedSubscript:");
        }
        const QVLJSONDictionary entry = member.value.dictionaryOrEmpty();
        events.push_back({member.key, QVLJSONValue::record(eventFromObsolete(entry))});
        flags.push_back({member.key, QVLJSONValue::record(flagFromObsolete(entry))});
    }
    const std::shared_ptr<QVLJournals> self = shared_from_this();
    m_eventCollection->setCollection(QVLJSONDictionary(std::move(events)));
    m_flagCollection->setCollection(QVLJSONDictionary(std::move(flags)));
    return true;
}

void QVLJournals::collection(QVLPropertyCollection& /*collection*/,
                             const std::vector<std::string>& /*objectsDidChange*/) {
    if (const auto delegate = m_delegate.lock()) {
        delegate->journalsDidChange(*this);
    }
}

std::shared_ptr<QVLJSONSerializable> QVLJournals::copy() const {
    return initWithQVLJSONObject(qvl_JSONObject());
}
