#pragma once

#include "QVLJSONSerialization.h"
#include "QVLJournalCollection.h"
#include "QVLJournalEvent.h"
#include "QVLJournalFlag.h"

#include <map>
#include <set>
#include <string>
#include <vector>

inline constexpr const char* kQVLJournalsJSONKeyVersion = "__version__";
inline constexpr const char* kQVLJournalsJSONKeyEvents = "events";
inline constexpr const char* kQVLJournalsJSONKeyFlags = "flags";
/// The only version of the file form that is written and read.
inline constexpr std::uint64_t kQVLJournalsJSONCurentVersion = 1;

class QVLJournals;

/// Told of every change of the journals. Main thread.
class QVL_EXPORT QVLJournalsDelegate {
public:
    virtual ~QVLJournalsDelegate();
    virtual void journalsDidChange(QVLJournals& journals) = 0;
};

/// Keeps a key counting as a session event for as long as somebody holds it.
class QVL_EXPORT QVLEventSessionLink final {};

/// All journal records of one engine: events and flags by the keys that the host chooses.
///
/// Records are made on first use and changed in place; every change reaches the delegate, which for an engine's
/// journals saves the file, posts and evaluates. A *session event* is counted at most once per session of the host.
/// Main thread, but for what is published.
class QVL_EXPORT QVLJournals final : public QVLJSONCompatible,
                                     public QVLJournalCollectionDelegate,
                                     public std::enable_shared_from_this<QVLJournals> {
public:
    /// Journals with what the JSON value holds, as `loadFromJSONObject` reads it. Reports to nobody.
    /// Throws what `loadFromJSONObject` throws.
    [[nodiscard]] static std::shared_ptr<QVLJournals> initWithQVLJSONObject(const QVLJSONValue& JSONObject);

    /// The record for the key; made empty, and not reported, when there is none. Null only while the
    /// collection pretends to be empty, or under an override that is no such record.
    [[nodiscard]] std::shared_ptr<QVLJournalEvent> eventForKey(const std::string& key);
    [[nodiscard]] std::shared_ptr<QVLJournalFlag> flagForKey(const std::string& key);

    /// Every key that has a record, empty ones included.
    [[nodiscard]] std::vector<std::string> allEventKeys() const { return m_eventCollection->collectionKeys(); }
    [[nodiscard]] std::vector<std::string> allFlagKeys() const { return m_flagCollection->collectionKeys(); }

    /// Triggers the key's event unless that was done in this session already. One emptied since is triggered again.
    void triggerSessionEventForKey(const std::string& key);
    /// Links the key as a session event, triggers it for this session, and returns the link. The key counts in every
    /// later session for as long as somebody holds the link.
    [[nodiscard]] std::shared_ptr<QVLEventSessionLink> eventSessionLinkForKey(const std::string& key);
    /// Begins a new session: triggers every key whose link is held.
    void triggerSessionEvents();

    /// Removes every record of both collections and reports those that were not empty. Overrides stay.
    void reset();

    /// The form of the journals file: "__version__", "events" and "flags", records that are empty left out. All three
    /// are always there.
    [[nodiscard]] QVLJSONValue qvl_JSONObject() const override;
    /// Its compact text, of which only what changed is written anew where that is possible.
    [[nodiscard]] QVLJSONWriteResult textToSave() const;
    /// The same form as of the last reported change. Any thread.
    [[nodiscard]] QVLJSONValue publishedJSONObject() const;
    /// Its compact text, of which only what changed is written anew. Any thread.
    [[nodiscard]] QVLJSONWriteResult publishedText() const;

    /// Replaces both collections with what the value holds in the file form or in the older one without a version.
    /// False, with one error line and nothing loaded, for a value that is no object or has another version. Throws
    /// `std::invalid_argument` ("Bad object: %@") when "events" or "flags" is there and no object.
    bool loadFromJSONObject(const QVLJSONValue& JSONObject);
    /// Reads the older form, a map from key to "lastTimeShown", "shownCount" and "optedOut". Throws
    /// `QVLUnrecognizedOperationError` for a member that does not have that shape.
    bool loadFromObsoleteJSONObject(const QVLJSONDictionary& JSONObject);

    [[nodiscard]] const std::shared_ptr<QVLJournalCollection>& eventCollection() const { return m_eventCollection; }
    [[nodiscard]] const std::shared_ptr<QVLJournalCollection>& flagCollection() const { return m_flagCollection; }
    /// The keys triggered in the current session.
    [[nodiscard]] const std::set<std::string>& triggeredSessionEvents() const { return m_triggeredSessionEvents; }

    /// Held weakly.
    [[nodiscard]] std::shared_ptr<QVLJournalsDelegate> delegate() const { return m_delegate.lock(); }
    void setDelegate(const std::weak_ptr<QVLJournalsDelegate>& delegate) { m_delegate = delegate; }

    /// Called by both collections.
    void collection(QVLPropertyCollection& collection, const std::vector<std::string>& objectsDidChange) override;

    [[nodiscard]] std::shared_ptr<QVLJSONSerializable> copy() const override;
    [[nodiscard]] std::string className() const override { return "QVLJournals"; }

private:
    QVLJournals();

    // Set once at creation, so that any thread sees whole collections.
    const std::shared_ptr<QVLJournalCollection> m_eventCollection;
    const std::shared_ptr<QVLJournalCollection> m_flagCollection;
    std::set<std::string> m_triggeredSessionEvents;
    std::map<std::string, std::weak_ptr<QVLEventSessionLink>> m_eventSessionLinks;
    std::weak_ptr<QVLJournalsDelegate> m_delegate;
};
