#include "platform/atomic_file.h"

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

TEST(AtomicFileTest, ReplacesTheWholeFileOrLeavesTheOldOne) {
    TempDir dir;
    const std::string path = dir.write("db.dat", "old content that is longer\r\n");
    const std::string replaced = "new\r\n" + std::string(200000, 'z');
    AtomicFile out(path);
    ASSERT_FALSE(out.open());
    out.writeLine("new");
    out.write(std::string(200000, 'z'));
    ASSERT_FALSE(out.commit());
    EXPECT_EQ(readFileBytes(path), replaced);

    // What a killed save left is replaced by the next one; an abandoned one tidies up.
    writeFileBytes(path + ".tmp", "left by a killed save");
    ASSERT_FALSE(replaceFileAtomically(path, "second"));
    {
        AtomicFile abandoned(path);
        ASSERT_FALSE(abandoned.open());
        abandoned.write("never committed");
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()),
                            std::filesystem::directory_iterator()),
              1);
    EXPECT_EQ(readFileBytes(path), "second");

    ASSERT_EQ(::chmod(path.c_str(), 0444), 0);  // refused even to root
    EXPECT_EQ(replaceFileAtomically(path, "new"), std::errc::permission_denied);
    EXPECT_EQ(readFileBytes(path), "second");
}

TEST(AtomicFileTest, AReplacedFileKeepsItsModeAndANewOneGetsTheUmasks) {
    TempDir dir;
    const mode_t oldUmask = ::umask(022);
    // name, mode of the old file (0: none), umask, mode of the new file
    const std::tuple<const char*, mode_t, mode_t, mode_t> rows[] = {
        {"private file stays private", 0600, 022, 0600},
        {"group-writable stays so", 0664, 077, 0664},
        {"new file, strict umask", 0, 027, 0640},
    };
    for (const auto& [name, oldMode, mask, expected] : rows) {
        SCOPED_TRACE(name);
        const std::string path = dir / name;
        if (oldMode != 0) {
            writeFileBytes(path, "old");
            ASSERT_EQ(::chmod(path.c_str(), oldMode), 0);
        }
        ::umask(mask);
        ASSERT_FALSE(replaceFileAtomically(path, "new"));
        struct stat st {};
        ASSERT_EQ(::stat(path.c_str(), &st), 0);
        EXPECT_EQ(st.st_mode & 07777, expected);
    }
    ::umask(oldUmask);
}

TEST(AtomicFileTest, AFileReplacedByRootKeepsItsOwnerAndGroup) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can give a file to another owner";
    TempDir dir;
    const std::string path = dir.write("shared.dat", "old");
    ASSERT_EQ(::chown(path.c_str(), 1234, 5678), 0);
    ASSERT_FALSE(replaceFileAtomically(path, "new"));
    struct stat st {};
    ASSERT_EQ(::stat(path.c_str(), &st), 0);
    EXPECT_EQ(st.st_uid, 1234u);
    EXPECT_EQ(st.st_gid, 5678u);
}

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
