#include "platform/atomic_file.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

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
    EXPECT_FALSE(fileExists(path + ".tmp"));

    ASSERT_EQ(::chmod(path.c_str(), 0444), 0);  // refused even to root
    EXPECT_EQ(replaceFileAtomically(path, "new"), std::errc::permission_denied);
    EXPECT_EQ(readFileBytes(path), replaced);
    EXPECT_FALSE(fileExists(path + ".tmp"));
}
