#include "picker/picker_file_system.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/temp_dir.h"

namespace fs = std::filesystem;

namespace {

using Names = std::vector<std::string>;

TEST(PickerFileSystemTest, ListsVisibleFoldersAndRegularFilesInReadingOrder) {
    TempDir dir;
    for (const char* name : {"b.txt", "A.txt", ".profile"})
        dir.write(name, "");
    for (const char* name : {"Zeta", "alpha", ".cache"})
        dir.mkdir(name);
    fs::create_directory_symlink(dir / "alpha", dir / "linked");
    fs::create_symlink(dir / "nowhere", dir / "dangling");
    ASSERT_EQ(mkfifo((dir / "pipe").c_str(), 0600), 0);
    FolderListing listing = PickerFileSystem().listFolder(dir.path());
    EXPECT_TRUE(listing.readable);
    EXPECT_EQ(listing.folders, (Names{"alpha", "linked", "Zeta"}));
    EXPECT_EQ(listing.files, (Names{"A.txt", "b.txt"}));
    EXPECT_FALSE(PickerFileSystem().listFolder(dir / "A.txt").readable);
}

}  // namespace
