#include "platform/xattr.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include "tests/temp_dir.h"

namespace {

const std::string kSummary = "\x05SummaryInformation";

}  // namespace

TEST(XattrTest, StoresAndReplacesWholeStreamValuesOfFilesAndFolders) {
    TempDir dir;
    for (const std::string& target : {dir.write("plan.txt", "body"), dir.mkdir("Old")}) {
        SCOPED_TRACE(target);
        std::string bytes = "stale";
        EXPECT_EQ(readStream(target, kSummary, bytes), StreamStatus::Missing);
        EXPECT_EQ(bytes, "");
        EXPECT_EQ(streamExists(target, kSummary), StreamStatus::Missing);
        ASSERT_EQ(replaceStream(target, kSummary, std::string("\xFE\xFF\0\0 binary\0", 12)),
                  StreamStatus::Ok);
        ASSERT_EQ(replaceStream(target, kSummary, "sh"), StreamStatus::Ok);
        EXPECT_EQ(readStream(target, kSummary, bytes), StreamStatus::Ok);
        EXPECT_EQ(bytes, "sh");
        ASSERT_EQ(replaceStream(target, "description", ""), StreamStatus::Ok);
        EXPECT_EQ(streamExists(target, "description"), StreamStatus::Ok);
    }
    EXPECT_EQ(readFileBytes(dir / "plan.txt"), "body");
}

TEST(XattrTest, ReportsEachKindOfFailureAndKeepsTheOldValue) {
    TempDir dir;
    const std::string fifo = dir / "fifo";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    std::string bytes;
    // User attributes are not allowed on FIFOs and devices; procfs keeps none.
    EXPECT_EQ(replaceStream(fifo, kSummary, "x"), StreamStatus::PermissionDenied);
    EXPECT_EQ(replaceStream("/proc/self/status", kSummary, "x"), StreamStatus::NotSupported);
    EXPECT_EQ(replaceStream(dir / "missing", kSummary, "x"), StreamStatus::Failed);
    EXPECT_EQ(readStream(dir / "missing", kSummary, bytes), StreamStatus::Failed);

    const std::string file = dir.write("plan.txt", "body");
    ASSERT_EQ(replaceStream(file, kSummary, "old value"), StreamStatus::Ok);
    // More than any file system keeps in one attribute value (ext4 4 KiB, XFS 64 KiB).
    EXPECT_EQ(replaceStream(file, kSummary, std::string(70000, 'x')), StreamStatus::Failed);
    EXPECT_EQ(readStream(file, kSummary, bytes), StreamStatus::Ok);
    EXPECT_EQ(bytes, "old value");
}
