#pragma once

#include "QVLJSONValue.h"

#include <string>
#include <string_view>

/// What reading JSON text came to: a value, or the reason why there is none.
struct QVL_EXPORT QVLJSONReadResult {
    /// Nothing when reading failed.
    QVLJSONValue value;
    /// The reason with the byte offset at which reading stopped; empty when it succeeded.
    std::string error;

    explicit operator bool() const noexcept { return error.empty(); }
};

/// What writing JSON text came to.
struct QVL_EXPORT QVLJSONWriteResult {
    /// UTF-8; empty when writing failed.
    std::string text;
    /// The reason; empty when it succeeded.
    std::string error;

    explicit operator bool() const noexcept { return error.empty(); }
};

/// JSON text in and out. Pure functions; any thread.
///
/// Reading takes UTF-8, with or without a byte order mark, and refuses what the standard refuses: lone surrogates,
/// bytes that are not UTF-8, NUL and other bare control characters, more than `QVLJSONValue::kMaximumDepth` levels,
/// numbers beyond the range of a double. Integers beyond 64 bits become doubles. Of members with the same name the
/// first counts.
///
/// Writing is in the order of the keys' bytes and so reproducible. Numbers are written in the shortest form that reads
/// back exactly, whole ones without a fraction; booleans as true and false; "/" as "\/", so that the text is safe
/// inside a script element.
class QVL_EXPORT QVLJSONSerialization {
public:
    enum class Reading {
        /// The top level must be an object or an array.
        Documents,
        /// Any value may stand at the top level.
        Fragments,
    };
    enum class Writing {
        /// No blanks or line breaks.
        Compact,
        /// Two blanks a level, one member a line, `"key" : value`.
        Pretty,
    };

    /// True for a dictionary or array whose values are all of the five JSON kinds, with finite numbers and valid UTF-8.
    [[nodiscard]] static bool isValidJSONObject(const QVLJSONValue& value);

    [[nodiscard]] static QVLJSONReadResult JSONObjectWithData(std::string_view data,
                                                              Reading reading = Reading::Documents);

    /// Fails for what `isValidJSONObject` refuses.
    [[nodiscard]] static QVLJSONWriteResult dataWithJSONObject(const QVLJSONValue& value,
                                                               Writing writing = Writing::Compact);

    /// Any single value, compact; for text that is shown or edited as one value. Fails as above for what cannot be
    /// written.
    [[nodiscard]] static QVLJSONWriteResult dataWithFragment(const QVLJSONValue& value,
                                                             Writing writing = Writing::Compact);
};
