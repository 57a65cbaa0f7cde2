#include "platform/process.h"

#include <chrono>
#include <thread>

#include <gtest/gtest.h>

#include "platform/lookup.h"
#include "tests/temp_dir.h"

TEST(ProcessTest, StartsAProgramWithoutWaitingAndReportsOneThatCannotStart) {
    TempDir dir;
    const std::string marker = dir / "started";
    ASSERT_FALSE(startDetached({"sh", "-c", "echo x > \"$0\"", marker}));
    for (int i = 0; i < 500 && !fileExists(marker); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_TRUE(fileExists(marker));
    EXPECT_EQ(startDetached({"no-such-program-anywhere"}), std::errc::no_such_file_or_directory);
}
