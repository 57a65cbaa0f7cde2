#include "stores/mod_time.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <utility>

#include "tests/temp_dir.h"

namespace {

constexpr std::int64_t kTenFifteenThirty = 1678788930;  // 2023-03-14 10:15:30 UTC

void setLastWrite(const std::string& path, std::int64_t seconds, long nanoseconds) {
    struct timespec times[2]{};
    times[0].tv_nsec = UTIME_OMIT;
    times[1].tv_sec = static_cast<time_t>(seconds);
    times[1].tv_nsec = nanoseconds;
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

std::pair<std::int64_t, long> lastWriteOf(const std::string& path) {
    struct stat st {};
    EXPECT_EQ(::stat(path.c_str(), &st), 0);
    return {st.st_mtim.tv_sec, st.st_mtim.tv_nsec};
}

TEST(ModTimeTest, TimeComesBackWithoutItsFractionOfASecond) {
    TempDir dir;
    std::string file = dir.write("plan.txt", "body");
    setLastWrite(file, kTenFifteenThirty, 750'000'000);

    std::int64_t lastWrite = 0;
    ASSERT_TRUE(modTime::getFileTimes(file, lastWrite));
    EXPECT_EQ(lastWrite, kTenFifteenThirty);
    setLastWrite(file, kTenFifteenThirty + 3600, 0);
    ASSERT_TRUE(modTime::setFileTimes(file, lastWrite));
    EXPECT_EQ(lastWriteOf(file), std::make_pair(kTenFifteenThirty, 0L));
}

TEST(ModTimeTest, ReadOnlyFileKeepsItsModeAndTakesTheTime) {
    TempDir dir;
    std::string file = dir.write("plan.txt", "body");
    ASSERT_EQ(::chmod(file.c_str(), 0444), 0);

    ASSERT_TRUE(modTime::setFileTimes(file, kTenFifteenThirty));
    struct stat st {};
    ASSERT_EQ(::stat(file.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0444u);
    EXPECT_EQ(lastWriteOf(file).first, kTenFifteenThirty);
}

TEST(ModTimeTest, MissingFileHasNoTimeToKeep) {
    TempDir dir;
    std::int64_t lastWrite = 42;
    EXPECT_FALSE(modTime::getFileTimes(dir / "gone.txt", lastWrite));
    EXPECT_EQ(lastWrite, 42);
    EXPECT_FALSE(modTime::setFileTimes(dir / "gone.txt", kTenFifteenThirty));
}

}  // namespace
