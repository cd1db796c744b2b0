#pragma once

#include "QVLJournalObject.h"

#include <cstdint>

inline constexpr const char* kQVLJournalEventFirstTime = "firstTime";
inline constexpr const char* kQVLJournalEventLastTime = "lastTime";
inline constexpr const char* kQVLJournalEventCount = "count";

/// How often something happened, and when first and last. Obtained from the journals by key; main thread.
class QVL_EXPORT QVLJournalEvent final : public QVLJournalObject {
public:
    /// An empty event that belongs to no collection.
    [[nodiscard]] static std::shared_ptr<QVLJournalEvent> init();
    /// An event from its JSON form. A value that is no JSON object is logged ("Could not load event from JSON: %@") and
    /// gives an empty event; a date that does not parse is left out.
    [[nodiscard]] static std::shared_ptr<QVLJournalEvent> initWithQVLJSONObject(const QVLJSONValue& JSONObject);

    /// Records one occurrence now and reports one change.
    void trigger();

    [[nodiscard]] std::optional<QVLDate> firstTime() const { return m_firstTime; }
    [[nodiscard]] std::optional<QVLDate> lastTime() const { return m_lastTime; }
    [[nodiscard]] std::uint64_t count() const { return m_count; }
    // Each setter reports a change; an equal value does nothing.
    void setFirstTime(const std::optional<QVLDate>& firstTime);
    void setLastTime(const std::optional<QVLDate>& lastTime);
    void setCount(std::uint64_t count);

    void reset() override;
    [[nodiscard]] bool isEmpty() const override;
    [[nodiscard]] bool isEqual(const QVLObject& other) const override;
    [[nodiscard]] std::size_t hash() const override;
    [[nodiscard]] std::string className() const override { return "QVLJournalEvent"; }

private:
    QVLJournalEvent() = default;
    /// The members "firstTime", "lastTime" and "count", each only when it holds something.
    [[nodiscard]] QVLJSONValue JSONObjectOfFields() const override;
    [[nodiscard]] std::shared_ptr<QVLJournalObject> copyOfFields() const override;

    std::optional<QVLDate> m_firstTime;
    std::optional<QVLDate> m_lastTime;
    std::uint64_t m_count = 0;
};
