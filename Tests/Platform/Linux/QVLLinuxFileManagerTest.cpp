#include "QVLLinuxFileManager.h"

#include "FileSizeLimit.h"
#include "TemporaryDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;
using ItemKind = QVLFileManager::ItemKind;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

class QVLLinuxFileManagerTest : public testing::Test {
protected:
    [[nodiscard]] std::string contents(const std::string& name) const {
        return files.contentsOfFileAtPath(directory.path(name)).value.value_or("(none)");
    }
    bool write(std::string_view data, const std::string& name) {
        return static_cast<bool>(files.writeAtomically(data, directory.path(name)));
    }
    [[nodiscard]] std::vector<std::string> names() const {
        return files.contentsOfDirectoryAtPath(directory.path()).value.value_or(std::vector<std::string>());
    }
    [[nodiscard]] fs::perms permissions(const std::string& name) const {
        return fs::status(directory.path(name)).permissions();
    }

    TemporaryDirectory directory;
    QVLLinuxFileManager files;
};

} // namespace

TEST_F(QVLLinuxFileManagerTest, WhatIsWrittenIsReadBackWholeAndNothingElseIsLeft) {
    std::string data(3'000'000, 'x');
    data[1] = '\0';
    EXPECT_TRUE(write(data, "file"));
    EXPECT_EQ(contents("file"), data);
    EXPECT_TRUE(write("", "file"));
    EXPECT_EQ(contents("file"), "");
    EXPECT_THAT(names(), UnorderedElementsAre("file"));
    EXPECT_EQ(files.contentsOfFileAtPath("/proc/self/comm").value.value_or("").back(), '\n');
}

TEST_F(QVLLinuxFileManagerTest, AFailedWriteLeavesTheOldFileAndNothingAside) {
    ASSERT_TRUE(write("old", "file"));
    {
        const FileSizeLimit limit(100'000);
        const auto outcome = files.writeAtomically(std::string(1'000'000, 'x'), directory.path("file"));
        EXPECT_FALSE(outcome);
        EXPECT_EQ(outcome.error, "write: File too large");
    }
    EXPECT_EQ(contents("file"), "old");
    ASSERT_TRUE(files.createDirectoryAtPath(directory.path("directory"), false));
    EXPECT_EQ(files.writeAtomically("x", directory.path("directory")).error, "rename: Is a directory");
    EXPECT_EQ(files.writeAtomically("x", directory.path("none/file")).error, "open: No such file or directory");
    EXPECT_THAT(names(), UnorderedElementsAre("file", "directory"));
}

TEST_F(QVLLinuxFileManagerTest, TheFirstWriteRemovesWhatAKilledProcessLeftAndNothingElse) {
    const std::string left = ".quorvel-0123456789abcdef";
    const std::string underWay = ".quorvel-fedcba9876543210";
    for (const std::string& name : {left, underWay, left + "0", std::string(".quorvel-notes0123456789")}) {
        std::ofstream(directory.path(name)) << "x";
    }
    for (const std::string& name : {left, left + "0", std::string(".quorvel-notes0123456789")}) {
        fs::last_write_time(directory.path(name), fs::file_time_type::clock::now() - std::chrono::hours(2));
    }
    EXPECT_TRUE(write("x", "file"));
    EXPECT_THAT(names(), UnorderedElementsAre("file", underWay, left + "0", ".quorvel-notes0123456789"));
}

TEST_F(QVLLinuxFileManagerTest, AReaderSeesTheOldContentOrTheNewAndNeverAnythingElse) {
    const std::string first(100'000, 'a');
    const std::string second(150'000, 'b');
    ASSERT_TRUE(write(first, "file"));
    std::thread writer([&] {
        QVLLinuxFileManager others;
        for (int round = 0; round < 20; ++round) {
            EXPECT_TRUE(others.writeAtomically(round % 2 ? first : second, directory.path("file")));
        }
    });
    for (int round = 0; round < 200; ++round) {
        const std::string seen = contents("file");
        EXPECT_TRUE(seen == first || seen == second);
    }
    writer.join();
}

TEST_F(QVLLinuxFileManagerTest, ANewFileObeysTheUmaskAndAnExistingOneKeepsItsMode) {
    const mode_t oldMask = ::umask(027);
    EXPECT_TRUE(write("x", "new"));
    ::umask(oldMask);
    EXPECT_EQ(permissions("new"), fs::perms(0640));
    fs::permissions(directory.path("new"), fs::perms(0604));
    EXPECT_TRUE(write("y", "new"));
    EXPECT_EQ(permissions("new"), fs::perms(0604));
}

TEST_F(QVLLinuxFileManagerTest, WritingToALinkKeepsTheLinkAndReplacesItsTarget) {
    ASSERT_TRUE(files.createDirectoryAtPath(directory.path("elsewhere"), false));
    fs::create_symlink("elsewhere/target", directory.path("inner"));
    fs::create_symlink(directory.path("inner"), directory.path("link"));
    EXPECT_TRUE(write("made through a link to nothing", "link"));
    EXPECT_TRUE(write("again", "link"));
    EXPECT_TRUE(fs::is_symlink(directory.path("link")));
    EXPECT_TRUE(fs::is_symlink(directory.path("inner")));
    EXPECT_EQ(contents("elsewhere/target"), "again");
    fs::create_symlink("circle", directory.path("circle"));
    EXPECT_FALSE(write("x", "circle"));
    EXPECT_TRUE(fs::is_symlink(directory.path("circle")));
}

TEST_F(QVLLinuxFileManagerTest, RemovingATreeLeavesAloneWhatItsLinksLeadTo) {
    ASSERT_TRUE(files.createDirectoryAtPath(directory.path("kept"), false));
    ASSERT_TRUE(write("x", "kept/file"));
    ASSERT_TRUE(files.createDirectoryAtPath(directory.path("tree/deep"), true));
    ASSERT_TRUE(write("x", "tree/deep/.hidden"));
    fs::create_directory_symlink(directory.path("kept"), directory.path("tree/link"));
    fs::create_symlink("nothing", directory.path("tree/dangling"));
    EXPECT_TRUE(files.removeItemAtPath(directory.path("tree")));
    EXPECT_EQ(contents("kept/file"), "x");
    fs::create_directory_symlink(directory.path("kept"), directory.path("link"));
    EXPECT_TRUE(files.removeItemAtPath(directory.path("link")));
    EXPECT_EQ(contents("kept/file"), "x");
    EXPECT_THAT(names(), UnorderedElementsAre("kept"));
    EXPECT_EQ(files.removeItemAtPath(directory.path("link")).error, "remove: No such file or directory");
}

TEST_F(QVLLinuxFileManagerTest, DirectoriesAreMadeWithParentsOnlyWhenAskedAndListedWithHiddenItems) {
    EXPECT_FALSE(files.createDirectoryAtPath(directory.path("a/b"), false));
    EXPECT_TRUE(files.createDirectoryAtPath(directory.path("a/b"), true));
    EXPECT_TRUE(files.createDirectoryAtPath(directory.path("a/b"), true));
    EXPECT_EQ(files.createDirectoryAtPath(directory.path("a/b"), false).error, "mkdir: File exists");
    ASSERT_TRUE(write("x", "a/.file"));
    EXPECT_FALSE(files.createDirectoryAtPath(directory.path("a/.file"), true));
    EXPECT_FALSE(files.createDirectoryAtPath(directory.path("a/.file/below"), true));
    EXPECT_THAT(*files.contentsOfDirectoryAtPath(directory.path("a")), UnorderedElementsAre("b", ".file"));
    EXPECT_FALSE(files.contentsOfDirectoryAtPath(directory.path("a/.file")));
    EXPECT_FALSE(files.contentsOfDirectoryAtPath(directory.path("none")));
}

TEST_F(QVLLinuxFileManagerTest, TellsWhatStandsAtAPathAndWhenItWasMade) {
    const auto before = std::chrono::system_clock::now() - std::chrono::seconds(5);
    ASSERT_TRUE(write("x", "file"));
    fs::create_symlink("nothing", directory.path("dangling"));
    EXPECT_EQ(files.itemKindAtPath(directory.path()), ItemKind::Directory);
    EXPECT_EQ(files.itemKindAtPath(directory.path("file")), ItemKind::File);
    EXPECT_EQ(files.itemKindAtPath(directory.path("dangling")), ItemKind::Missing);
    const auto date = files.creationDateOfItemAtPath(directory.path("file"));
    ASSERT_TRUE(date);
    EXPECT_GT(*date, before);
    EXPECT_LT(*date, before + std::chrono::seconds(60));
    EXPECT_EQ(files.creationDateOfItemAtPath(directory.path("none")).error, "statx: No such file or directory");
}

TEST_F(QVLLinuxFileManagerTest, APathThatTheSystemWouldCutOffNamesNothing) {
    ASSERT_TRUE(write("kept", "file"));
    for (const std::string& path : {std::string(), directory.path("file") + '\0' + "more"}) {
        EXPECT_EQ(files.itemKindAtPath(path), ItemKind::Missing);
        EXPECT_FALSE(files.contentsOfFileAtPath(path));
        EXPECT_FALSE(files.writeAtomically("x", path));
        EXPECT_FALSE(files.removeItemAtPath(path));
        EXPECT_FALSE(files.createDirectoryAtPath(path, true));
        EXPECT_FALSE(files.creationDateOfItemAtPath(path));
        EXPECT_FALSE(files.contentsOfDirectoryAtPath(path));
    }
    EXPECT_EQ(contents("file"), "kept");
}

TEST_F(QVLLinuxFileManagerTest, ReadingWhatIsNoFileGivesTheReasonAtOnce) {
    ASSERT_EQ(::mkfifo(directory.path("pipe").c_str(), 0600), 0);
    for (const std::string& path : {directory.path(), directory.path("pipe"), std::string("/dev/zero")}) {
        EXPECT_EQ(files.contentsOfFileAtPath(path).error, "read: Not a regular file") << path;
    }
    EXPECT_EQ(files.contentsOfFileAtPath(directory.path("none")).error, "open: No such file or directory");
}
