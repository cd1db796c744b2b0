#include "QVLLinuxBundle.h"

#include "QVLLinuxFileManager.h"
#include "TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <filesystem>

TEST(QVLLinuxBundleTest, FindsTheLibrarysOwnResourcesWhateverTheWorkingDirectory) {
    const std::filesystem::path old = std::filesystem::current_path();
    std::filesystem::current_path("/");
    const auto path = QVLLinuxBundle::libraryBundle().pathForResource("Quorvel.js");
    std::filesystem::current_path(old);
    ASSERT_TRUE(path);
    EXPECT_TRUE(path->starts_with("/"));
    EXPECT_TRUE(QVLLinuxFileManager().contentsOfFileAtPath(*path));
}

TEST(QVLLinuxBundleTest, TheFirstDirectoryThatHasTheFileCounts) {
    const TemporaryDirectory first;
    const TemporaryDirectory second;
    QVLLinuxFileManager files;
    ASSERT_TRUE(files.createDirectoryAtPath(first.path("a"), false));
    ASSERT_TRUE(files.writeAtomically("x", second.path("a")));
    ASSERT_TRUE(files.writeAtomically("x", first.path("b")));
    ASSERT_TRUE(files.writeAtomically("x", second.path("b")));
    const QVLLinuxBundle bundle({"/nowhere", first.path(), second.path()});
    EXPECT_EQ(bundle.pathForResource("a"), second.path("a"));
    EXPECT_EQ(bundle.pathForResource("b"), first.path("b"));
    EXPECT_EQ(bundle.pathForResource("c"), std::nullopt);
    EXPECT_TRUE(bundle.hasDirectory("a"));
    EXPECT_FALSE(bundle.hasDirectory("b"));
    EXPECT_EQ(bundle.pathForResource(""), std::nullopt);
}
