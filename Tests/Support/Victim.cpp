#include "Victim.h"

#include "QVLJSONSerialization.h"
#include "QVLQuorvelKeys.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>

extern char** environ;

namespace {

QVLJSONReadResult read(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return QVLJSONSerialization::JSONObjectWithData(text.str());
}

} // namespace

Victim::Victim(const std::string& directory, Script script) {
    int ends[2];
    if (::pipe(ends) != 0) {
        throw std::runtime_error("no pipe");
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addclose(&actions, ends[0]);
    // Its log says much, and nothing that anybody wants to read.
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    std::string program = QVL_TEST_VICTIM;
    std::string where = directory;
    std::string hungry = "hungry";
    char* const arguments[] = {program.data(), where.data(), script == Script::Hungry ? hungry.data() : nullptr,
                               nullptr};
    const int error = ::posix_spawn(&m_process, program.c_str(), &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    m_output = ends[0];
    if (error != 0) {
        throw std::runtime_error("cannot start " + program);
    }
}

Victim::~Victim() {
    kill();
    ::close(m_output);
}

void Victim::hear(std::size_t bytes) {
    char piece[256];
    while (bytes > 0) {
        const ssize_t count = ::read(m_output, piece, std::min(bytes, sizeof piece));
        if (count <= 0) {
            return;
        }
        m_said.append(piece, static_cast<std::size_t>(count));
        bytes -= static_cast<std::size_t>(count);
    }
}

void Victim::kill() {
    if (m_process > 0) {
        ::kill(m_process, SIGKILL);
        ::waitpid(m_process, nullptr, 0);
        m_process = 0;
    }
}

bool Victim::hasCrashed() {
    hear(std::string::npos);
    int status = 0;
    ::waitpid(m_process, &status, 0);
    m_process = 0;
    return WIFSIGNALED(status) || WEXITSTATUS(status) != 0;
}

std::uint64_t Victim::lastCount() {
    hear(std::string::npos);
    const std::size_t end = m_said.rfind('\n');
    if (end == std::string::npos) {
        return 0;
    }
    const std::size_t start = m_said.rfind('\n', end - 1);
    return std::stoull(m_said.substr(start == std::string::npos ? 0 : start + 1));
}

std::uint64_t Victim::savedCount(const std::string& directory) {
    const std::string outputsPath = directory + "/quorvel/" + kQVLOutputsCacheFile;
    if (std::ifstream(outputsPath).good()) {
        const QVLJSONReadResult outputs = read(outputsPath);
        EXPECT_TRUE(outputs) << outputs.error;
    }
    const QVLJSONReadResult journals = read(directory + "/quorvel/" + kQVLJournalsFile);
    EXPECT_TRUE(journals) << journals.error;
    const QVLJSONDictionary events = journals.value.dictionaryOrEmpty().valueForKey("events").dictionaryOrEmpty();
    return events.valueForKey("round").dictionaryOrEmpty().valueForKey("count").unsignedValue();
}
