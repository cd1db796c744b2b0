#pragma once

#include <optional>
#include <string>

namespace host {

/// The directory that the engine keeps its files in: one of the user's, or a temporary one that goes with this object.
class HostDirectory final {
public:
    /// Made when missing. Throws `HostError` when it cannot be had.
    explicit HostDirectory(const std::optional<std::string>& directory);
    HostDirectory(const HostDirectory&) = delete;
    HostDirectory& operator=(const HostDirectory&) = delete;
    ~HostDirectory();

    [[nodiscard]] const std::string& path() const { return m_path; }
    [[nodiscard]] bool isTemporary() const { return m_isTemporary; }

    /// Puts journals where an engine made afterwards finds them as its own.
    void setJournals(const std::string& text) const;

private:
    std::string m_path;
    bool m_isTemporary;
};

} // namespace host
