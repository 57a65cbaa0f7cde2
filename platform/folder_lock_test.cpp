#include "platform/folder_lock.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include <future>
#include <thread>
#include <utility>

#include "tests/temp_dir.h"

namespace {

using namespace std::chrono_literals;

// What another copy of the program gets when it asks for the folder's lock now.
std::error_code otherCopysLock(const std::string& folder) {
    return std::async(std::launch::async,
                      [&] {
                          FolderLock lock;
                          return lock.acquire(folder, 0ms);
                      })
        .get();
}

// A move holds the turn of a folder and then rewrites the index in it, or runs a full
// save there: those must not wait for the move's own turn, while everyone else waits
// until the outermost turn ends.
TEST(ItemTurnsTest, TheHoldersOwnLocksOnTheFolderGoAheadAndOthersWait) {
    const TempDir dir;
    const std::string other = dir.mkdir("other");
    ItemTurns move;
    ASSERT_FALSE(move.acquire({dir.path(), other, dir / "missing", dir.write("file", "")}, 0ms));
    {
        ItemTurns save;
        ASSERT_FALSE(save.acquire({dir.path()}, 0ms));
        FolderLock index;
        ASSERT_FALSE(index.acquire(dir.path(), 0ms));
    }
    EXPECT_EQ(otherCopysLock(dir.path()), std::errc::timed_out) << "after the inner ones ended";
    EXPECT_EQ(otherCopysLock(other), std::errc::timed_out);
    move.release();
    EXPECT_FALSE(otherCopysLock(dir.path()));
    FolderLock afterwards;
    ASSERT_FALSE(afterwards.acquire(dir.path(), 0ms));
    EXPECT_EQ(std::async(std::launch::async,
                         [&] {
                             ItemTurns turn;
                             return turn.acquire({other, dir.path()}, 0ms);
                         })
                  .get(),
              std::errc::timed_out);
    EXPECT_FALSE(otherCopysLock(other)) << "a turn that timed out holds nothing";
}

// Two moves between the same two folders in opposite directions would wait for each
// other if each took the folders' turns in the order it names them. Every turn takes
// them in the order of their ids: here, while the later folder is held, a turn asked
// for in the opposite order already holds the earlier one.
TEST(ItemTurnsTest, TurnsAreTakenInOneOrderWhateverOrderTheyAreAskedIn) {
    const TempDir dir;
    std::string first = dir.mkdir("a"), second = dir.mkdir("b");
    struct stat a {
    }, b{};
    ASSERT_EQ(::stat(first.c_str(), &a), 0);
    ASSERT_EQ(::stat(second.c_str(), &b), 0);
    if (std::pair(a.st_dev, a.st_ino) > std::pair(b.st_dev, b.st_ino))
        std::swap(first, second);
    FolderLock otherMove;
    ASSERT_FALSE(otherMove.acquire(second, 0ms));
    auto backwards = std::async(std::launch::async, [&] {
        ItemTurns turn;
        return turn.acquire({second, first}, 20s);
    });
    bool firstTaken = false;
    for (int i = 0; i < 100 && !firstTaken; ++i) {
        firstTaken = otherCopysLock(first) == std::errc::timed_out;
        std::this_thread::sleep_for(50ms);
    }
    EXPECT_TRUE(firstTaken);
    otherMove.release();
    EXPECT_FALSE(backwards.get());
}

}  // namespace
