#pragma once

#include "QVLJSONValue.h"
#include "QVLObject.h"

#include <memory>
#include <optional>
#include <string>

/// One group of one A/B test. Main thread; owned by the participant or result that refers to it.
class QVL_EXPORT QVLABTestGroup final : public QVLObject {
public:
    /// How deep attribute values may nest: what remains of a JSON document's levels inside the cache file, in which the
    /// file itself, the result, the participant and the group stand around them.
    static constexpr std::size_t kMaximumAttributeDepth = QVLJSONValue::kMaximumDepth - 4;

    /// A group without a guid.
    [[nodiscard]] static std::shared_ptr<QVLABTestGroup> init();

    /// The group that the service or the cache describes, or null, silently, when the value is no dictionary, "guid" is
    /// no string, "basic" is missing or no number, or "attributeValues" is present and no dictionary or nests too deep.
    [[nodiscard]] static std::shared_ptr<QVLABTestGroup> groupWithJSON(const QVLJSONValue& JSON);

    /// The members "guid" (when there is one) and "basic", and "attributeValues" only when set.
    [[nodiscard]] QVLJSONDictionary toJSON() const;

    /// Identifier of the group; no value only until it is set.
    [[nodiscard]] const std::optional<std::string>& guid() const { return m_guid; }
    void setGuid(std::optional<std::string> guid) { m_guid = std::move(guid); }

    /// The service's own flag; the library does not interpret it.
    [[nodiscard]] bool basic() const { return m_basic; }
    void setBasic(bool basic) { m_basic = basic; }

    /// Handed on unchanged to the rules script; no value when the service gave none.
    [[nodiscard]] const std::optional<QVLJSONDictionary>& attributeValues() const { return m_attributeValues; }
    /// Values that nest deeper than `kMaximumAttributeDepth` count as none.
    void setAttributeValues(std::optional<QVLJSONDictionary> attributeValues);

    [[nodiscard]] std::string className() const override { return "QVLABTestGroup"; }

private:
    QVLABTestGroup() = default;

    std::optional<std::string> m_guid;
    bool m_basic = false;
    std::optional<QVLJSONDictionary> m_attributeValues;
};
