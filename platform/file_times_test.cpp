#include "platform/file_times.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "tests/temp_dir.h"

TEST(FileTimesTest, ReadsAndSetsTheLastWriteTimeInWholeSeconds) {
    TempDir dir;
    const std::string file = dir.write("plan.txt", "x");
    const struct timespec times[2] = {{1234567, 0}, {1700000000, 750000000}};
    ASSERT_EQ(::utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
    ASSERT_EQ(::chmod(file.c_str(), 0444), 0);
    std::int64_t seconds = 0;
    ASSERT_FALSE(getLastWriteTime(file, seconds));
    EXPECT_EQ(seconds, 1700000000);
    EXPECT_EQ(getLastWriteTime(dir / "missing", seconds), std::errc::no_such_file_or_directory);

    ASSERT_FALSE(setLastWriteTime(file, 1700000123));
    struct stat st {};
    ASSERT_EQ(::stat(file.c_str(), &st), 0);
    EXPECT_EQ(st.st_mtim.tv_sec, 1700000123);
    EXPECT_EQ(st.st_mtim.tv_nsec, 0);
    EXPECT_EQ(st.st_atim.tv_sec, 1234567);
    EXPECT_EQ(st.st_mode & 07777, 0444u);
}
