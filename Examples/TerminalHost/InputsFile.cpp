#include "InputsFile.h"

#include "HostError.h"
#include "HostFiles.h"

#include <utility>

#include <sys/stat.h>

namespace host {

InputsFile::InputsFile(std::string path) : m_path(std::move(path)), m_state(stateOf(m_path)) {
    read();
}

bool InputsFile::readIfChanged() {
    // The state is taken first: what is written while the file is read counts as a change of its own.
    const State state = stateOf(m_path);
    if (state == m_state) {
        return false;
    }
    m_state = state;
    read();
    return true;
}

InputsFile::State InputsFile::stateOf(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        return {};
    }
    return {status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

void InputsFile::read() {
    QVLJSONDictionary inputs = readJSONFile(m_path, "inputs file");
    if (inputs.isEmpty()) {
        throw HostError("the inputs file '" + m_path + "' holds no inputs, and without any no script runs");
    }
    m_inputs = std::move(inputs);
}

} // namespace host
