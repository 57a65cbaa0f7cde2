#include "platform/file_times.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "tests/temp_dir.h"

namespace {

struct stat statOf(const std::string& path) {
    struct stat st {};
    ::stat(path.c_str(), &st);
    return st;
}

void setTimes(const std::string& path, time_t atime, time_t mtime, long mtimeNanos) {
    struct timespec times[2] = {{atime, 0}, {mtime, mtimeNanos}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

}  // namespace

TEST(FileTimesTest, ReadsTheLastWriteTimeTruncatedToTheSecond) {
    TempDir dir;
    const std::string file = dir.write("plan.txt", "x");
    setTimes(file, 1000, 1700000000, 750000000);
    std::int64_t seconds = 0;
    ASSERT_FALSE(getLastWriteTime(file, seconds));
    EXPECT_EQ(seconds, 1700000000);
    EXPECT_EQ(getLastWriteTime(dir / "missing", seconds), std::errc::no_such_file_or_directory);
}

TEST(FileTimesTest, SetsOnlyTheLastWriteTimeAndKeepsTheMode) {
    TempDir dir;
    const std::string file = dir.write("plan.txt", "x");
    setTimes(file, 1234567, 1600000000, 500);
    ASSERT_EQ(::chmod(file.c_str(), 0444), 0);
    ASSERT_FALSE(setLastWriteTime(file, 1700000123));
    struct stat st = statOf(file);
    EXPECT_EQ(st.st_mtim.tv_sec, 1700000123);
    EXPECT_EQ(st.st_mtim.tv_nsec, 0);
    EXPECT_EQ(st.st_atim.tv_sec, 1234567);
    EXPECT_EQ(st.st_mode & 07777, 0444u);
}
