#pragma once

#include "QVLJournalObject.h"

inline constexpr const char* kQVLJournalFlagFlag = "flag";
inline constexpr const char* kQVLJournalFlagLastTime = "lastTime";

/// A yes/no fact and when it was last set. Obtained from the journals by key; main thread.
class QVL_EXPORT QVLJournalFlag final : public QVLJournalObject {
public:
    /// An empty flag that belongs to no collection.
    [[nodiscard]] static std::shared_ptr<QVLJournalFlag> init();
    /// A flag from its JSON form. A value that is no JSON object is logged ("Could not load flag from JSON: %@") and
    /// gives an empty flag; a date that does not parse is left out.
    [[nodiscard]] static std::shared_ptr<QVLJournalFlag> initWithQVLJSONObject(const QVLJSONValue& JSONObject);

    /// Sets the fact, its time to now, and reports a change, also when the fact stays the same.
    void updateFlag(bool flag);

    [[nodiscard]] bool flag() const { return m_flag; }
    [[nodiscard]] std::optional<QVLDate> lastTime() const { return m_lastTime; }
    // Each setter reports a change; an equal value does nothing.
    void setFlag(bool flag);
    void setLastTime(const std::optional<QVLDate>& lastTime);

    void reset() override;
    /// A false flag with a time is not empty.
    [[nodiscard]] bool isEmpty() const override;
    [[nodiscard]] bool isEqual(const QVLObject& other) const override;
    [[nodiscard]] std::size_t hash() const override;
    [[nodiscard]] std::string className() const override { return "QVLJournalFlag"; }

private:
    QVLJournalFlag() = default;
    /// The members "flag", only when true, and "lastTime", only when set.
    [[nodiscard]] QVLJSONValue JSONObjectOfFields() const override;
    [[nodiscard]] std::shared_ptr<QVLJournalObject> copyOfFields() const override;

    bool m_flag = false;
    std::optional<QVLDate> m_lastTime;
};
