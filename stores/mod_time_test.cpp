#include "stores/mod_time.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include <cstdint>

#include "tests/temp_dir.h"

namespace {

constexpr std::int64_t kTenFifteenThirty = 1678788930;  // 2023-03-14 10:15:30 UTC

TEST(ModTimeTest, TimeComesBackToTheSecondAndAReadOnlyFileKeepsItsMode) {
    TempDir dir;
    std::string file = dir.write("plan.txt", "body");
    struct timespec times[2]{{0, UTIME_OMIT}, {kTenFifteenThirty, 750'000'000}};
    ASSERT_EQ(::utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
    ASSERT_EQ(::chmod(file.c_str(), 0444), 0);

    std::int64_t lastWrite = 0;
    ASSERT_TRUE(modTime::getFileTimes(file, lastWrite));
    EXPECT_EQ(lastWrite, kTenFifteenThirty);
    ASSERT_TRUE(modTime::setFileTimes(file, lastWrite));
    struct stat st {};
    ASSERT_EQ(::stat(file.c_str(), &st), 0);
    EXPECT_EQ(st.st_mtim.tv_sec, kTenFifteenThirty);
    EXPECT_EQ(st.st_mtim.tv_nsec, 0);
    EXPECT_EQ(st.st_mode & 07777, 0444u);
}

TEST(ModTimeTest, MissingFileHasNoTimeToKeep) {
    TempDir dir;
    std::int64_t lastWrite = 42;
    EXPECT_FALSE(modTime::getFileTimes(dir / "gone.txt", lastWrite));
    EXPECT_EQ(lastWrite, 42);
    EXPECT_FALSE(modTime::setFileTimes(dir / "gone.txt", kTenFifteenThirty));
}

}  // namespace
