#pragma once

#include "QVLJSONNode.h"
#include "QVLJSONString.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

class QVLJSONArray;
class QVLJSONDictionary;
class QVLJSONSerializable;

/// One JSON value, or none.
///
/// A value is a dictionary, an array, a string, a number (booleans are numbers that remember being written as true or
/// false) or null. A default-constructed value is *nothing*: the missing value, which is not null.
///
/// Values are immutable and shared: a copy is a 16-byte handle and may be used on any thread. Containers of the library
/// may also hold records (objects that convert themselves to JSON); a value that holds a record anywhere is not valid
/// JSON until `qvl_JSONObject` has converted it.
///
/// Containers nest at most `kMaximumDepth` levels deep, so that no walk over a value can exhaust the stack; building a
/// deeper one throws `std::length_error`.
class QVL_EXPORT QVLJSONValue final {
public:
    enum class Kind : std::uint8_t { Nothing, Null, Number, String, Array, Dictionary, Record };

    static constexpr std::size_t kMaximumDepth = 512;

    /// Nothing.
    QVLJSONValue() noexcept = default;
    // Values are made from their C++ counterparts without ceremony; that is what makes literals readable.
    // NOLINTBEGIN(google-explicit-constructor)
    QVLJSONValue(std::nullptr_t) noexcept : m_tag(Tag::Null) {}
    template <std::same_as<bool> Boolean>
    QVLJSONValue(Boolean value) noexcept : m_tag(Tag::Boolean), m_content{.boolean = value} {}
    template <std::integral Integer>
    requires(!std::same_as<Integer, bool>) QVLJSONValue(Integer value)
    noexcept {
        if constexpr (std::is_signed_v<Integer>) {
            setInteger(static_cast<std::int64_t>(value));
        } else {
            setUnsigned(static_cast<std::uint64_t>(value));
        }
    }
    /// Any finite or non-finite double; a non-finite number is refused when written as JSON.
    QVLJSONValue(double value) noexcept : m_tag(Tag::Double), m_content{.real = value} {}
    QVLJSONValue(std::string text) : QVLJSONValue(QVLJSONString(std::move(text))) {}
    QVLJSONValue(std::string_view text) : QVLJSONValue(QVLJSONString(text)) {}
    /// A null pointer gives nothing.
    QVLJSONValue(const char* text);
    QVLJSONValue(QVLJSONString text) noexcept;
    QVLJSONValue(QVLJSONArray array) noexcept;
    QVLJSONValue(QVLJSONDictionary dictionary) noexcept;
    /// Nothing stays nothing; otherwise the value of the content.
    template <class Content>
    requires std::convertible_to<const Content&, QVLJSONValue> QVLJSONValue(const std::optional<Content>& content)
        : QVLJSONValue(content ? QVLJSONValue(*content) : QVLJSONValue()) {}
    // NOLINTEND(google-explicit-constructor)

    /// Wraps a record for keeping in a dictionary or array. No record gives nothing.
    [[nodiscard]] static QVLJSONValue record(std::shared_ptr<QVLJSONSerializable> record);

    QVLJSONValue(const QVLJSONValue& other) noexcept : m_tag(other.m_tag), m_content(other.m_content) {
        retainContent();
    }
    QVLJSONValue(QVLJSONValue&& other) noexcept
        : m_tag(std::exchange(other.m_tag, Tag::Nothing)), m_content(other.m_content) {}
    QVLJSONValue& operator=(QVLJSONValue other) noexcept {
        std::swap(m_tag, other.m_tag);
        std::swap(m_content, other.m_content);
        return *this;
    }
    ~QVLJSONValue() { releaseContent(); }

    [[nodiscard]] Kind kind() const noexcept;
    [[nodiscard]] bool isNothing() const noexcept { return m_tag == Tag::Nothing; }
    [[nodiscard]] bool isNull() const noexcept { return m_tag == Tag::Null; }
    /// True for booleans too.
    [[nodiscard]] bool isNumber() const noexcept { return kind() == Kind::Number; }
    /// True for a number that is written as true or false.
    [[nodiscard]] bool isBoolean() const noexcept { return m_tag == Tag::Boolean; }
    /// True for a number held as an integer, which fits 64 bits signed or unsigned.
    [[nodiscard]] bool isInteger() const noexcept { return m_tag == Tag::Signed || m_tag == Tag::Unsigned; }
    [[nodiscard]] bool isString() const noexcept { return m_tag == Tag::String; }
    [[nodiscard]] bool isArray() const noexcept { return m_tag == Tag::Array; }
    [[nodiscard]] bool isDictionary() const noexcept { return m_tag == Tag::Dictionary; }
    [[nodiscard]] bool isRecord() const noexcept { return m_tag == Tag::Record; }

    // Safe casts. They never convert between kinds, never fail and never log.

    /// The string itself; no value for any other kind.
    [[nodiscard]] std::optional<std::string> qvl_castToStringValue() const;
    /// The number as a signed 64-bit integer, a fraction cut off toward zero and a number out of range held at the
    /// nearest end of the range; true is 1. 0 for any other kind and for a number that is not a number.
    [[nodiscard]] std::int64_t qvl_castToIntegerValue() const noexcept;
    /// True for any number whose value is not zero; false for any other kind.
    [[nodiscard]] bool qvl_castToBoolValue() const noexcept;
    /// The array itself; no value for any other kind.
    [[nodiscard]] std::optional<QVLJSONArray> qvl_castToArrayValue() const;
    /// The dictionary itself; no value for any other kind.
    [[nodiscard]] std::optional<QVLJSONDictionary> qvl_castToDictionaryValue() const;

    /// The number as an unsigned 64-bit integer; a negative one as its two's complement. 0 for any other kind.
    [[nodiscard]] std::uint64_t unsignedValue() const noexcept;
    /// The number as a double, rounded if it must be; 0 for any other kind.
    [[nodiscard]] double doubleValue() const noexcept;
    /// The string's text without a copy; empty for any other kind.
    [[nodiscard]] std::string_view stringView() const noexcept;
    /// The array, or an empty one for any other kind.
    [[nodiscard]] QVLJSONArray arrayOrEmpty() const noexcept;
    /// The dictionary, or an empty one for any other kind.
    [[nodiscard]] QVLJSONDictionary dictionaryOrEmpty() const noexcept;
    /// The record, or null for any other kind.
    [[nodiscard]] std::shared_ptr<QVLJSONSerializable> recordValue() const;
    /// The record as the given class, or null when it is none.
    template <class Record>
    [[nodiscard]] std::shared_ptr<Record> recordAs() const {
        return std::dynamic_pointer_cast<Record>(recordValue());
    }

    /// The value as plain JSON. Strings, numbers and null are themselves; a record gives its own JSON.
    ///
    /// A dictionary converts every member and drops one that gives nothing. An array converts every element, and one
    /// that gives nothing becomes null; but a dictionary that is an *element* is not converted: it gives its own member
    /// named "qvl_JSONObject", or null without one. That asymmetry is kept on purpose.
    [[nodiscard]] QVLJSONValue qvl_JSONObject() const;

    /// Text for log lines: strings bare at the top level, containers in the manner of JSON, null as "<null>" and
    /// nothing as
    /// "(null)". Never fails, whatever the value holds.
    [[nodiscard]] std::string description() const;

    /// Equality by value. Numbers compare by value across representations, exactly: 1 == 1.0 == true. Nothing equals
    /// nothing only. Records compare with `isEqual`.
    [[nodiscard]] bool isEqual(const QVLJSONValue& other) const;
    /// Equal values hash alike.
    [[nodiscard]] std::size_t hash() const;
    /// True when both are one and the same content or the same scalar of the same representation; cheap.
    [[nodiscard]] bool isIdentical(const QVLJSONValue& other) const noexcept;
    /// A value independent of this one: a copied record, or the shared immutable content.
    [[nodiscard]] QVLJSONValue copy() const;

    /// How many containers are nested in this one, itself included; 0 for anything else.
    [[nodiscard]] std::size_t depth() const noexcept;

    friend bool operator==(const QVLJSONValue& a, const QVLJSONValue& b) { return a.isEqual(b); }

private:
    friend class QVLJSONArray;
    friend class QVLJSONDictionary;

    enum class Tag : std::uint8_t {
        Nothing,
        Null,
        Boolean,
        Signed,
        Unsigned,
        Double,
        String,
        Array,
        Dictionary,
        Record
    };
    union Content {
        std::int64_t integer = 0;
        std::uint64_t natural;
        double real;
        bool boolean;
        const QVLJSONNode* node;
    };

    QVLJSONValue(Tag tag, const QVLJSONNode* adoptedNode) noexcept : m_tag(tag), m_content{.node = adoptedNode} {}

    void setInteger(std::int64_t value) noexcept {
        m_tag = Tag::Signed;
        m_content.integer = value;
    }
    void setUnsigned(std::uint64_t value) noexcept;
    /// An empty text or container needs no node.
    [[nodiscard]] bool hasNode() const noexcept { return m_tag >= Tag::String && m_content.node; }
    void retainContent() const noexcept {
        if (hasNode()) {
            m_content.node->retain();
        }
    }
    void releaseContent() noexcept {
        if (hasNode()) {
            m_content.node->release();
        }
    }

    Tag m_tag = Tag::Nothing;
    Content m_content;
};

static_assert(sizeof(QVLJSONValue) == 16);

template <>
struct std::hash<QVLJSONValue> {
    std::size_t operator()(const QVLJSONValue& value) const { return value.hash(); }
};

#include "QVLJSONArray.h"      // IWYU pragma: export
#include "QVLJSONDictionary.h" // IWYU pragma: export
