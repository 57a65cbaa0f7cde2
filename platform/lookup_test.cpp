#include "platform/lookup.h"

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/temp_dir.h"

TEST(LookupTest, SortsEntriesIntoTheAttributeClasses) {
    TempDir dir;
    const std::string file = dir.write("file.txt", "x");
    ASSERT_EQ(::mkfifo((dir / "fifo").c_str(), 0600), 0);
    ASSERT_EQ(::symlink("nowhere", (dir / "dangling").c_str()), 0);
    ASSERT_EQ(::symlink("loop", (dir / "loop").c_str()), 0);
    ASSERT_EQ(::symlink(file.c_str(), (dir / "link").c_str()), 0);
    const std::pair<std::string, EntryKind> cases[] = {
        {file, EntryKind::File},
        {dir / "link", EntryKind::File},
        {dir.mkdir("folder"), EntryKind::Directory},
        {dir / "fifo", EntryKind::System},
        {dir / "missing", EntryKind::Missing},
        {file + "/below", EntryKind::Missing},
        {dir / "dangling", EntryKind::Missing},
        {dir / "loop", EntryKind::Error},
        {dir / std::string(5000, 'n'), EntryKind::Error},
    };
    for (const auto& [path, kind] : cases) {
        SCOPED_TRACE(path.substr(0, 80));
        EXPECT_EQ(lookupEntry(path).kind, kind);
    }
    EXPECT_FALSE(lookupEntry(file).readOnly);
    ASSERT_EQ(::chmod(file.c_str(), 0444), 0);
    EXPECT_TRUE(lookupEntry(file).readOnly);
}
