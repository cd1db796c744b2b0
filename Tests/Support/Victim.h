#pragma once

#include <cstdint>
#include <string>

#include <sys/types.h>

/// A host in a process of its own, which writes its journals and outputs as fast as it can and says how far it has been
/// told that its journals got.
class Victim final {
public:
    enum class Script {
        Plain,
        /// Takes small pieces of memory without end, in a process that may not have much.
        Hungry,
    };

    explicit Victim(const std::string& directory, Script script = Script::Plain);
    Victim(const Victim&) = delete;
    Victim& operator=(const Victim&) = delete;
    ~Victim();

    /// Reads until it has said this many bytes more, or has ended.
    void hear(std::size_t bytes);
    void kill();
    /// Waits for it to end by itself; false when it ended as if nothing were wrong.
    [[nodiscard]] bool hasCrashed();
    /// The last number that it said whole. Waits for its end.
    [[nodiscard]] std::uint64_t lastCount();

    /// What the journals in the directory of a dead one say. Fails the test when one of its files does not load.
    [[nodiscard]] static std::uint64_t savedCount(const std::string& directory);

private:
    pid_t m_process = 0;
    int m_output = -1;
    std::string m_said;
};
