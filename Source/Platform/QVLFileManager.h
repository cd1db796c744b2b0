#pragma once

#include "QVLDate.h"
#include "QVLDurability.h"
#include "QVLResult.h"

#include <string>
#include <string_view>
#include <vector>

/// Files and directories. Paths are the file system's bytes. Any thread; no operation throws.
class QVLFileManager {
public:
    virtual ~QVLFileManager() = default;

    enum class ItemKind { Missing, File, Directory };
    /// What stands at the path, symbolic links followed.
    [[nodiscard]] virtual ItemKind itemKindAtPath(const std::string& path) const = 0;
    [[nodiscard]] bool itemExistsAtPath(const std::string& path) const {
        return itemKindAtPath(path) != ItemKind::Missing;
    }

    /// The whole file's bytes.
    [[nodiscard]] virtual QVLResult<std::string> contentsOfFileAtPath(const std::string& path) const = 0;

    /// Replaces the file whole: written aside in the same directory, brought to disk where it is to be durable, then
    /// moved over the target, so that a reader or the process's end at any moment finds the old content or the new. Keeps an existing file's permissions. A
    /// failure leaves the old file as it was and nothing aside.
    [[nodiscard]] virtual QVLOutcome writeAtomically(std::string_view data, const std::string& path,
                                                     QVLDurability durability) = 0;
    [[nodiscard]] QVLOutcome writeAtomically(std::string_view data, const std::string& path) {
        return writeAtomically(data, path, QVLDurability::Durable);
    }

    /// Removes a file, or a directory with all that it holds.
    [[nodiscard]] virtual QVLOutcome removeItemAtPath(const std::string& path) = 0;

    /// Makes a directory; missing parents only when asked.
    [[nodiscard]] virtual QVLOutcome createDirectoryAtPath(const std::string& path,
                                                           bool withIntermediateDirectories) = 0;

    /// When the item was made, as the file system has it.
    [[nodiscard]] virtual QVLResult<QVLDate> creationDateOfItemAtPath(const std::string& path) const = 0;

    /// The names in a directory, hidden ones included, in the order that the file system gives.
    [[nodiscard]] virtual QVLResult<std::vector<std::string>>
    contentsOfDirectoryAtPath(const std::string& path) const = 0;

    /// The system's directory for temporary files.
    [[nodiscard]] virtual std::string temporaryDirectory() const = 0;
};
