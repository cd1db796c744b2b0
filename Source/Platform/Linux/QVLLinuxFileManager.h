#pragma once

#include "QVLFileManager.h"

#include <mutex>
#include <set>

/// Files by the system's own calls. Errors read "operation: reason". A path that is empty or holds a NUL byte names
/// nothing.
///
/// Writing to a symbolic link replaces the file that it leads to. A process that is killed while it writes leaves a file
/// ".quorvel-" with 16 hexadecimal digits aside; the first write of a later process to the same directory removes those
/// that are older than an hour. A file system that does not record when an item was made answers with the last change of
/// its content.
class QVLLinuxFileManager final : public QVLFileManager {
public:
    [[nodiscard]] ItemKind itemKindAtPath(const std::string& path) const override;
    [[nodiscard]] QVLResult<std::string> contentsOfFileAtPath(const std::string& path) const override;
    using QVLFileManager::writeAtomically;
    [[nodiscard]] QVLOutcome writeAtomically(std::string_view data, const std::string& path,
                                             QVLDurability durability) override;
    /// A symbolic link is removed itself, never what it leads to.
    [[nodiscard]] QVLOutcome removeItemAtPath(const std::string& path) override;
    [[nodiscard]] QVLOutcome createDirectoryAtPath(const std::string& path, bool withIntermediateDirectories) override;
    [[nodiscard]] QVLResult<QVLDate> creationDateOfItemAtPath(const std::string& path) const override;
    [[nodiscard]] QVLResult<std::vector<std::string>> contentsOfDirectoryAtPath(const std::string& path) const override;
    [[nodiscard]] std::string temporaryDirectory() const override;

private:
    void removeLeftoversOnce(const std::string& directory);

    std::mutex m_mutex;
    std::set<std::string> m_tidiedDirectories;
};
