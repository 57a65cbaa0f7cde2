#include "platform/xattr.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include "tests/temp_dir.h"

TEST(XattrTest, ReplacesWholeValuesAndReportsEachKindOfFailure) {
    TempDir dir;
    const std::string kSummary = "\x05SummaryInformation";
    const std::string file = dir.write("plan.txt", "body"), fifo = dir / "fifo";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    std::string bytes = "stale";
    EXPECT_EQ(readStream(file, kSummary, bytes), StreamStatus::Missing);
    EXPECT_EQ(bytes, "");
    const std::string longer("\xFE\xFF\0\0 a longer binary value\0\0", 28);
    ASSERT_EQ(replaceStream(file, kSummary, longer), StreamStatus::Ok);
    ASSERT_EQ(replaceStream(file, kSummary, "old value"), StreamStatus::Ok);

    // User attributes are not allowed on FIFOs and devices; procfs keeps none.
    EXPECT_EQ(replaceStream(fifo, kSummary, "x"), StreamStatus::PermissionDenied);
    EXPECT_EQ(replaceStream("/proc/self/status", kSummary, "x"), StreamStatus::NotSupported);
    EXPECT_EQ(replaceStream(dir / "missing", kSummary, "x"), StreamStatus::Failed);
    // More than any file system keeps in one attribute value (ext4 4 KiB, XFS 64 KiB).
    EXPECT_EQ(replaceStream(file, kSummary, std::string(70000, 'x')), StreamStatus::Failed);
    EXPECT_EQ(readStream(file, kSummary, bytes), StreamStatus::Ok);
    EXPECT_EQ(bytes, "old value");
}
