#include "platform/lookup.h"

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/temp_dir.h"

TEST(LookupTest, SortsEntriesIntoTheAttributeClasses) {
    TempDir dir;
    const std::string file = dir.write("file.txt", "x"), folder = dir.mkdir("folder");
    ASSERT_EQ(::mkfifo((dir / "fifo").c_str(), 0600), 0);
    ASSERT_EQ(::symlink("nowhere", (dir / "dangling").c_str()), 0);
    ASSERT_EQ(::symlink("loop", (dir / "loop").c_str()), 0);
    ASSERT_EQ(::symlink(file.c_str(), (dir / "link").c_str()), 0);
    struct Case {
        std::string path;
        EntryKind kind;
        bool exists, isFile, fileOrFolder;
    } const cases[] = {
        {file, EntryKind::File, true, true, true},
        {dir / "link", EntryKind::File, true, true, true},
        {folder, EntryKind::Directory, true, false, true},
        {dir / "fifo", EntryKind::System, true, false, false},
        {dir / "missing", EntryKind::Missing, false, false, false},
        {file + "/below", EntryKind::Missing, false, false, false},
        {dir / "dangling", EntryKind::Missing, false, false, false},
        {dir / "loop", EntryKind::Error, false, false, false},
        {dir / std::string(5000, 'n'), EntryKind::Error, false, false, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path.substr(0, 80));
        EXPECT_EQ(lookupEntry(c.path).kind, c.kind);
        EXPECT_EQ(entryExists(c.path), c.exists);
        EXPECT_EQ(fileExists(c.path), c.isFile);
        EXPECT_EQ(fileOrFolderExists(c.path), c.fileOrFolder);
        EXPECT_EQ(IsADirectory(c.path), c.kind == EntryKind::Directory);
    }
    EXPECT_FALSE(lookupEntry(file).readOnly);
    ASSERT_EQ(::chmod(file.c_str(), 0444), 0);
    EXPECT_TRUE(lookupEntry(file).readOnly);
}
