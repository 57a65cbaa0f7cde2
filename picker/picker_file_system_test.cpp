#include "picker/picker_file_system.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

#include "picker/path_entry.h"
#include "tests/temp_dir.h"

namespace fs = std::filesystem;

namespace {

using Names = std::vector<std::string>;

class PickerFileSystemTest : public ::testing::Test {
protected:
    TempDir dir_;
    PickerFileSystem disk_;
};

TEST_F(PickerFileSystemTest, ListsVisibleFoldersAndRegularFilesInReadingOrder) {
    dir_.write("b.txt", "");
    dir_.write("A.txt", "");
    dir_.write(".profile", "");
    dir_.mkdir("Zeta");
    dir_.mkdir("alpha");
    dir_.mkdir(".cache");
    fs::create_directory_symlink(dir_ / "alpha", dir_ / "linked");
    fs::create_symlink(dir_ / "nowhere", dir_ / "dangling");
    ASSERT_EQ(mkfifo((dir_ / "pipe").c_str(), 0600), 0);
    FolderListing listing = disk_.listFolder(dir_.path());
    EXPECT_TRUE(listing.readable);
    EXPECT_EQ(listing.folders, (Names{"alpha", "linked", "Zeta"}));
    EXPECT_EQ(listing.files, (Names{"A.txt", "b.txt"}));
}

TEST_F(PickerFileSystemTest, WhatIsNoFolderCannotBeListed) {
    EXPECT_FALSE(disk_.listFolder(dir_.write("plain.txt", "")).readable);
    EXPECT_FALSE(disk_.listFolder(dir_ / "missing").readable);
}

TEST_F(PickerFileSystemTest, TheRootIsAlwaysADrive) {
    Names mounts = disk_.mountPoints();
    EXPECT_NE(std::ranges::find(mounts, "/"), mounts.end());
    EXPECT_TRUE(std::ranges::is_sorted(mounts));
}

TEST_F(PickerFileSystemTest, TheFirstOrdinaryFileCountsDotFilesButNoFolders) {
    std::string empty = dir_.mkdir("empty");
    dir_.mkdir("onlyDot/sub");
    dir_.write("onlyDot/.rc", "");
    EXPECT_EQ(firstOrdinaryFile(empty + "/"), "");
    EXPECT_EQ(firstOrdinaryFile(dir_ / "onlyDot/"), ".rc");
    EXPECT_EQ(firstOrdinaryFile(dir_ / "onlyDot/.rc"), ".rc");
    EXPECT_EQ(firstOrdinaryFile(dir_ / "onlyDot/sub"), "");
    EXPECT_EQ(firstOrdinaryFile(dir_ / "missing/"), "");
}

}  // namespace
