#pragma once

#include "QVLExport.h"
#include "QVLJSONValue.h"

#include <memory>
#include <string>
#include <string_view>

/// The host application's user defaults: named values that outlive the process, overridden by the process's arguments.
///
/// An argument pair `-Key value` on the host's command line stands above the stored values for the life of the process;
/// its value is read as JSON, else YES and NO as booleans, else as text. The value may itself begin with "-". Any
/// thread.
class QVL_EXPORT QVLUserDefaults {
public:
    virtual ~QVLUserDefaults();

    /// The process's user defaults. Any thread.
    [[nodiscard]] static std::shared_ptr<QVLUserDefaults> standardUserDefaults();

    /// Every entry, arguments over stored values.
    [[nodiscard]] virtual QVLJSONDictionary dictionaryRepresentation() const = 0;

    /// Stores a value at once; nothing removes the key. A value that cannot be stored is dropped, and the stored file
    /// stays as it was.
    virtual void setObjectForKey(const QVLJSONValue& value, const std::string& key) = 0;

    /// The value, or nothing.
    [[nodiscard]] QVLJSONValue objectForKey(std::string_view key) const;
    /// A boolean or number that is not zero, or one of the texts YES, true and 1 in any case; false for everything
    /// else.
    [[nodiscard]] bool boolForKey(std::string_view key) const;
    void removeObjectForKey(const std::string& key) { setObjectForKey({}, key); }
};
