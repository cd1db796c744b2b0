#pragma once

#include <Quorvel/QVLJSONValue.h>

#include <cstdint>
#include <optional>
#include <string>
#include <tuple>

namespace host {

/// The file that the inputs come from, which the user may change while the host runs.
class InputsFile final {
public:
    /// Throws `HostError` when it cannot be used or holds no inputs, without which no script runs.
    explicit InputsFile(std::string path);

    [[nodiscard]] const std::string& path() const { return m_path; }
    /// What was last read.
    [[nodiscard]] const QVLJSONDictionary& inputs() const { return m_inputs; }

    /// Reads the file again if it has changed, also by replacement; true when it was read. Throws as the constructor
    /// does, once for each change, and keeps the inputs as they were.
    bool readIfChanged();

private:
    /// Device, number, size and time of change tell one state of the file from another; all zero for no file.
    using State = std::tuple<std::uint64_t, std::uint64_t, std::int64_t, std::int64_t, std::int64_t>;
    [[nodiscard]] static State stateOf(const std::string& path);
    void read();

    const std::string m_path;
    State m_state;
    QVLJSONDictionary m_inputs;
};

} // namespace host
