#include "QVLJSONSerialization.h"
#include "QVLQuorvelKeys.h"
#include "TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

extern char** environ;

namespace {

/// A victim process and what it says.
class Victim final {
public:
    explicit Victim(const std::string& directory) {
        int ends[2];
        if (::pipe(ends) != 0) {
            throw std::runtime_error("no pipe");
        }
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        posix_spawn_file_actions_addclose(&actions, ends[0]);
        std::string program = QVL_TEST_VICTIM;
        std::string argument = directory;
        char* const arguments[] = {program.data(), argument.data(), nullptr};
        const int error = ::posix_spawn(&m_process, program.c_str(), &actions, nullptr, arguments, environ);
        posix_spawn_file_actions_destroy(&actions);
        ::close(ends[1]);
        m_output = ends[0];
        if (error != 0) {
            throw std::runtime_error("cannot start " + program);
        }
    }
    ~Victim() {
        kill();
        ::close(m_output);
    }

    /// Reads until the victim has said this many bytes more, or has ended.
    void hear(std::size_t bytes) {
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
    void kill() {
        if (m_process > 0) {
            ::kill(m_process, SIGKILL);
            ::waitpid(m_process, nullptr, 0);
            m_process = 0;
        }
    }
    /// The last number that it said whole.
    [[nodiscard]] std::uint64_t lastCount() {
        hear(std::string::npos);
        const std::size_t end = m_said.rfind('\n');
        if (end == std::string::npos) {
            return 0;
        }
        const std::size_t start = m_said.rfind('\n', end - 1);
        return std::stoull(m_said.substr(start == std::string::npos ? 0 : start + 1));
    }

private:
    pid_t m_process = 0;
    int m_output = -1;
    std::string m_said;
};

std::string contentOf(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

int roundCount() {
    const char* const wanted = std::getenv("QVL_KILL_ROUNDS");
    return wanted ? std::atoi(wanted) : 20;
}

TEST(Kill, AtAnyMomentLeavesFilesThatLoadAndLosesNoChangeThatWasTold) {
    const TemporaryDirectory directory;
    const std::string journalsPath = directory.path("quorvel/") + kQVLJournalsFile;
    const std::string outputsPath = directory.path("quorvel/") + kQVLOutputsCacheFile;
    std::mt19937 random(20261122); // NOLINT(cert-msc32-c): the same rounds every time
    std::uint64_t told = 0;
    for (int round = 0; round < roundCount(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        Victim victim(directory.path());
        victim.hear(1 + random() % 400);
        victim.kill();
        told = std::max(told, victim.lastCount());

        const QVLJSONReadResult journals = QVLJSONSerialization::JSONObjectWithData(contentOf(journalsPath));
        ASSERT_TRUE(journals) << journals.error;
        const QVLJSONDictionary events = journals.value.dictionaryOrEmpty().valueForKey("events").dictionaryOrEmpty();
        const std::uint64_t saved =
            events.valueForKey("round").dictionaryOrEmpty().valueForKey("count").unsignedValue();
        EXPECT_GE(saved, told);
        if (std::filesystem::exists(outputsPath)) {
            const QVLJSONReadResult outputs = QVLJSONSerialization::JSONObjectWithData(contentOf(outputsPath));
            EXPECT_TRUE(outputs) << outputs.error;
        }
    }
    EXPECT_GT(told, 0U);
}

} // namespace
