#include "platform/atomic_file.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include <filesystem>

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

    // Two writers at once each write a file of their own; the later rename wins.
    AtomicFile first(path), second(path);
    ASSERT_FALSE(first.open());
    ASSERT_FALSE(second.open());
    first.write("first");
    second.write("second");
    ASSERT_FALSE(first.commit());
    ASSERT_FALSE(second.commit());
    EXPECT_EQ(readFileBytes(path), "second");
    {
        AtomicFile abandoned(path);
        ASSERT_FALSE(abandoned.open());
        abandoned.write("never committed");
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()),
                            std::filesystem::directory_iterator()),
              1);

    ASSERT_EQ(::chmod(path.c_str(), 0444), 0);  // refused even to root
    EXPECT_EQ(replaceFileAtomically(path, "new"), std::errc::permission_denied);
    EXPECT_EQ(readFileBytes(path), "second");
}
