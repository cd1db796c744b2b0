#pragma once

#include <Quorvel/QVLJSONValue.h>

#include <optional>
#include <string>

namespace host {

/// The directory that the environment and the engine keep their files in: one of the user's, or a temporary one that
/// goes with this object.
class HostDirectory final {
public:
    /// Made when missing; the subdirectory, which begins with a slash or is empty, is the engine's. Throws `HostError`
    /// when it cannot be had.
    HostDirectory(const std::optional<std::string>& directory, const std::string& subdirectory);
    HostDirectory(const HostDirectory&) = delete;
    HostDirectory& operator=(const HostDirectory&) = delete;
    ~HostDirectory();

    [[nodiscard]] const std::string& path() const { return m_path; }
    [[nodiscard]] const std::string& engineDirectory() const { return m_engineDirectory; }
    [[nodiscard]] bool isTemporary() const { return m_isTemporary; }

    /// Puts journals where an engine made afterwards finds them as its own.
    void setJournals(const QVLJSONDictionary& journals) const;

private:
    std::string m_path;
    std::string m_engineDirectory;
    bool m_isTemporary;
};

} // namespace host
