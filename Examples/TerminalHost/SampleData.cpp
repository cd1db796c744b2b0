#include "SampleData.h"

#include <filesystem>
#include <system_error>

namespace host {

std::string sampleDataPath(const std::string& name) {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    const std::filesystem::path besideProgram = program.parent_path() / "SampleData" / name;
    if (!error && std::filesystem::exists(besideProgram, error)) {
        return std::filesystem::canonical(besideProgram, error).string();
    }
    return (std::filesystem::path(TERMINAL_HOST_SAMPLE_DATA) / name).string();
}

} // namespace host
