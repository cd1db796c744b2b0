#include "EngineTest.h"
#include "FileSizeLimit.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

// Disks that take nothing, and directories that are not there any more: real ones, under an engine that runs.

namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// No permission means anything to root, who gets a read-only mount instead.
class ReadOnlyDirectory final {
public:
    explicit ReadOnlyDirectory(std::string path) : m_path(std::move(path)) {
        m_isInForce = ::geteuid() == 0 ? mountReadOnly() : ::chmod(m_path.c_str(), 0555) == 0;
    }
    ReadOnlyDirectory(const ReadOnlyDirectory&) = delete;
    ReadOnlyDirectory& operator=(const ReadOnlyDirectory&) = delete;
    ~ReadOnlyDirectory() {
        if (::geteuid() == 0) {
            ::umount2(m_path.c_str(), MNT_DETACH);
        } else {
            ::chmod(m_path.c_str(), 0755);
        }
    }
    [[nodiscard]] bool isInForce() const { return m_isInForce; }

private:
    /// Seen by nobody but this process.
    [[nodiscard]] bool mountReadOnly() const {
        const char* const path = m_path.c_str();
        return ::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
               ::mount(path, path, nullptr, MS_BIND, nullptr) == 0 &&
               ::mount(nullptr, path, nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr) == 0;
    }

    std::string m_path;
    bool m_isInForce = false;
};

/// Puts something into an item's place for a while.
class Replaced final {
public:
    Replaced(std::string path, const std::function<void(const std::string&)>& put) : m_path(std::move(path)) {
        fs::rename(m_path, m_path + ".aside");
        put(m_path);
    }
    Replaced(const Replaced&) = delete;
    Replaced& operator=(const Replaced&) = delete;
    ~Replaced() {
        EXPECT_TRUE(fs::remove(m_path)) << "what was put there is gone";
        fs::rename(m_path + ".aside", m_path);
    }

private:
    std::string m_path;
};

class DiskTest : public EngineTest {
protected:
    DiskTest() {
        engine = QVLQuorvel::initWithDirectory(account, nullptr, nullptr);
        observe(engine);
        engine->setInputs({{"number", 0}});
        engine->start();
        EXPECT_TRUE(load(scriptWithBody("answer.number = inputs.number; return JSON.stringify(answer);")));
        change();
    }

    /// Changes the inputs and the journals, to the next number both.
    void change() {
        ++number;
        clearLog();
        engine->setInputs({{"number", number}});
        engine->journals()->eventForKey("change")->trigger();
        settle();
        EXPECT_EQ(engine->outputForKey("number")->integerValue(), number);
        EXPECT_EQ(engine->journals()->eventForKey("change")->count(), static_cast<std::uint64_t>(number));
    }
    /// What another engine finds in the files.
    void expectSaved(int saved) {
        clearLog();
        const auto other = QVLQuorvel::initWithDirectory(account, nullptr, nullptr);
        const auto output = other->outputForKey("number");
        EXPECT_EQ(output ? output->integerValue() : 0, saved);
        EXPECT_EQ(other->journals()->eventForKey("change")->count(), static_cast<std::uint64_t>(saved));
        EXPECT_THAT(errors(), IsEmpty());
    }
    /// Under a fault nothing is lost but the saving, which the log tells of each file, and which the next change after
    /// the fault makes up for.
    template <class Fault>
    void expectChangesSurvive(Fault makeFault) {
        const int saved = number;
        {
            const auto fault = makeFault();
            change();
            for (const char* const file : {kQVLJournalsFile, kQVLOutputsCacheFile}) {
                EXPECT_THAT(errors(), Contains(AllOf(HasSubstr("Could not save file: "), HasSubstr(file))));
            }
        }
        expectSaved(saved);
        change();
        EXPECT_THAT(errors(), IsEmpty());
        expectSaved(number);
    }

    const std::string account = directory.path("account");
    const std::string engineDirectory = account + "/quorvel";
    int number = 0;
};

TEST_F(DiskTest, AReadOnlyOneKeepsTheFilesAsTheyAreAndLosesNoChange) {
    {
        const ReadOnlyDirectory readOnly(engineDirectory);
        if (!readOnly.isInForce()) {
            GTEST_SKIP() << "root may not mount here, and nothing else keeps root from writing";
        }
        expectSaved(1);
    }
    expectChangesSurvive([&] { return ReadOnlyDirectory(engineDirectory); });
}

TEST_F(DiskTest, AFullOneKeepsTheFilesAsTheyAreAndLosesNoChange) {
    expectChangesSurvive([] { return FileSizeLimit(4); });
}

TEST_F(DiskTest, ADirectoryThatBecomesALinkToItselfOrStandsInAFileIsLeftAloneUntilItIsBack) {
    const auto putLoop = [](const std::string& path) { fs::create_symlink(path, path); };
    const auto putFile = [](const std::string& path) { std::ofstream(path) << "precious"; };
    expectChangesSurvive([&] { return Replaced(engineDirectory, putLoop); });
    expectChangesSurvive([&] { return Replaced(account, putLoop); });
    expectChangesSurvive([&] { return Replaced(account, putFile); });
}

TEST_F(DiskTest, AnEnginesDirectoryThatGoesAwayOrBecomesAFileIsMadeAnewWithAllThatTheEngineKnows) {
    fs::remove_all(account);
    change();
    EXPECT_THAT(errors(), IsEmpty());
    expectSaved(number);
    fs::remove_all(engineDirectory);
    std::ofstream(engineDirectory) << "in the way";
    change();
    EXPECT_THAT(errors(), IsEmpty());
    expectSaved(number);
}

} // namespace
