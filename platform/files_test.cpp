#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <future>
#include <thread>
#include <tuple>

#include "platform/files.h"
#include "platform/lookup.h"
#include "tests/temp_dir.h"

// A link is never a folder of its own, whatever it points at, and says that it is a link.
TEST(ReadFolderTest, TellsFoldersAndLinksApart) {
    TempDir dir;
    dir.write("file", "x");
    dir.mkdir("folder");
    ASSERT_EQ(::symlink((dir / "folder").c_str(), (dir / "to folder").c_str()), 0);
    ASSERT_EQ(::symlink((dir / "gone").c_str(), (dir / "dangling").c_str()), 0);
    std::vector<FolderItem> items;
    ASSERT_FALSE(readFolder(dir.path(), items));
    std::vector<std::tuple<std::string, bool, bool>> seen;
    seen.reserve(items.size());
    for (const FolderItem& item : items)
        seen.emplace_back(item.name, item.isFolder, item.isLink);
    std::sort(seen.begin(), seen.end());
    EXPECT_EQ(seen, (std::vector<std::tuple<std::string, bool, bool>>{{"dangling", false, true},
                                                                      {"file", false, false},
                                                                      {"folder", true, false},
                                                                      {"to folder", false, true}}));
}

// Threads that read folders side by side each enter folders of their own; the
// process's current folder stays where it was, during and after.
TEST(CurrentFolderTest, AThreadWithAFolderOfItsOwnLeavesTheProcesssAlone) {
    TempDir dir;
    dir.mkdir("inner");
    const std::filesystem::path before = std::filesystem::current_path();
    std::promise<void> entered, checked;
    bool own = false, in = false;
    std::jthread reader([&] {
        own = ownCurrentFolder();
        CurrentFolder current;
        in = own && current.enter(dir / "inner") &&
             std::filesystem::current_path() == std::filesystem::path(dir / "inner");
        entered.set_value();
        checked.get_future().wait();
    });
    entered.get_future().wait();
    EXPECT_EQ(std::filesystem::current_path(), before);
    checked.set_value();
    reader.join();
    EXPECT_TRUE(own && in);
    EXPECT_EQ(std::filesystem::current_path(), before);
}
