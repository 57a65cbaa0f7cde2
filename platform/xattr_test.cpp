#include "platform/xattr.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include "tests/temp_dir.h"

namespace {

const std::string kSummary = "\x05SummaryInformation";

}  // namespace

TEST(XattrTest, StoresAndReplacesWholeStreamValues) {
    TempDir dir;
    const std::string file = dir.write("plan.txt", "body");
    std::string bytes = "stale";
    EXPECT_EQ(readStream(file, kSummary, bytes), StreamStatus::Missing);
    EXPECT_EQ(bytes, "");
    EXPECT_EQ(streamExists(file, kSummary), StreamStatus::Missing);

    const std::string value("\xFE\xFF\0\0 binary\0", 12);
    ASSERT_EQ(replaceStream(file, kSummary, value), StreamStatus::Ok);
    ASSERT_EQ(replaceStream(file, kSummary, "sh"), StreamStatus::Ok);
    EXPECT_EQ(readStream(file, kSummary, bytes), StreamStatus::Ok);
    EXPECT_EQ(bytes, "sh");

    ASSERT_EQ(replaceStream(file, "description", ""), StreamStatus::Ok);
    EXPECT_EQ(streamExists(file, "description"), StreamStatus::Ok);
    EXPECT_EQ(readStream(file, "description", bytes), StreamStatus::Ok);
    EXPECT_EQ(bytes, "");
    EXPECT_EQ(readFileBytes(file), "body");
}

TEST(XattrTest, FoldersCarryStreamsToo) {
    TempDir dir;
    const std::string folder = dir.mkdir("Old");
    ASSERT_EQ(replaceStream(folder, "description", "text"), StreamStatus::Ok);
    std::string bytes;
    EXPECT_EQ(readStream(folder, "description", bytes), StreamStatus::Ok);
    EXPECT_EQ(bytes, "text");
}

TEST(XattrTest, ReportsEachKindOfFailureDistinctly) {
    TempDir dir;
    const std::string fifo = dir / "fifo";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    std::string bytes;
    // User attributes are not allowed on FIFOs and devices.
    EXPECT_EQ(replaceStream(fifo, kSummary, "x"), StreamStatus::PermissionDenied);
    // procfs keeps no user attributes.
    EXPECT_EQ(replaceStream("/proc/self/status", kSummary, "x"), StreamStatus::NotSupported);
    EXPECT_EQ(replaceStream(dir / "missing", kSummary, "x"), StreamStatus::Failed);
    EXPECT_EQ(readStream(dir / "missing", kSummary, bytes), StreamStatus::Failed);
}

TEST(XattrTest, AFailedReplaceLeavesTheOldValueExactlyAsItWas) {
    TempDir dir;
    const std::string file = dir.write("plan.txt", "body");
    ASSERT_EQ(replaceStream(file, kSummary, "old value"), StreamStatus::Ok);
    // More than any file system keeps in one attribute value (ext4 4 KiB, XFS 64 KiB).
    EXPECT_EQ(replaceStream(file, kSummary, std::string(70000, 'x')), StreamStatus::Failed);
    std::string bytes;
    EXPECT_EQ(readStream(file, kSummary, bytes), StreamStatus::Ok);
    EXPECT_EQ(bytes, "old value");
}
