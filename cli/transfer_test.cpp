// mv and cp carry the description in every store: afterwards `get DST` prints what
// `get SRC` printed before, and nothing of the source is left behind by a move.
#include "cli/transfer.h"

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "platform/code_page.h"
#include "platform/folder_lock.h"
#include "platform/xattr.h"
#include "stores/failsafe_db.h"
#include "stores/ntfs_streams.h"
#include "tests/cli_fixture.h"

namespace {

class TransferTest : public CliFixture {
protected:
    bool hasRecord(const std::string& path) const {
        return readFailsafeDB(failsafeFile(), path).has_value();
    }
    // The files that hold many entries, to check that a refused call changes none.
    std::string sharedFiles() const {
        return readFileBytes(failsafeFile()) + readFileBytes(docs_ / "00_index.txt");
    }
};

// The moved file's index entry is the last line of its index, which pruning keeps:
// only the move itself can take it out.
TEST_F(TransferTest, AMoveCarriesEveryStoreAndLeavesNothingBehind) {
    const std::string plan = docs_.write("plan.txt", "x"),
                      moved = docs_.mkdir("sub") + "/moved.txt";
    docs_.write("Album/p.jpg", "x");
    ASSERT_EQ(run({"set", "--export", plan, "Plan\nsecond"}), 0);
    describe(docs_.write("other.txt", "x"), "Other");
    describe(docs_ / "Album/p.jpg", "A photo");
    const std::string before = get(plan);
    ASSERT_EQ(run({"mv", plan, moved}), 0) << err_.str();
    EXPECT_EQ(get(moved), before);
    EXPECT_EQ(readFileBytes(docs_ / "00_index.txt"), "other.txt    Other\r\n");
    EXPECT_EQ(readFileBytes(docs_ / "sub/00_index.txt"),
              "moved.txt    Plan\r\n             second\r\n");
    EXPECT_FALSE(std::filesystem::exists(plan + ".description"));
    EXPECT_EQ(readFileBytes(moved + ".description"), "Plan\r\nsecond\r\n");
    EXPECT_FALSE(hasRecord(plan));
    EXPECT_EQ(readFailsafeDB(failsafeFile(), moved), "Plan\r\nsecond\r\n");

    // A folder's records move with it, every one under it included.
    ASSERT_EQ(run({"mv", docs_ / "Album", docs_ / "Pictures"}), 0) << err_.str();
    EXPECT_FALSE(hasRecord(docs_ / "Album/p.jpg"));
    EXPECT_EQ(readFailsafeDB(failsafeFile(), docs_ / "Pictures/p.jpg"), "A photo\r\n");

    const std::string shared = sharedFiles();
    docs_.write("taken.txt.description", "someone else's\r\n");
    // A copy onto a described file must not hand it the source's description.
    const std::tuple<const char*, const char*, const char*> refused[] = {
        {"mv", "other.txt", "Pictures"},       {"mv", "other.txt", "taken.txt"},
        {"mv", "Pictures", "Pictures/inner"},  {"mv", "gone.txt", "new.txt"},
        {"cp", "other.txt", "Pictures/p.jpg"},
    };
    for (const auto& [verb, source, destination] : refused) {
        SCOPED_TRACE(std::string(verb) + " " + source + " to " + destination);
        EXPECT_EQ(run({verb, docs_ / source, docs_ / destination}), 2);
        EXPECT_EQ(sharedFiles(), shared);
    }
    EXPECT_EQ(get(docs_ / "other.txt"), "Other\n");
    EXPECT_EQ(get(docs_ / "Pictures/p.jpg"), "A photo\n");
}

TEST_F(TransferTest, ACopyKeepsTheSourceAndGivesEveryCopiedEntryItsDescription) {
    docs_.write("Album/p.jpg", "x");
    ASSERT_EQ(run({"set", "--export", docs_ / "Album", "The album"}), 0) << err_.str();
    describe(docs_ / "Album/p.jpg", "A photo");
    ASSERT_EQ(::chmod((docs_ / "Album/p.jpg").c_str(), 0640), 0);
    EXPECT_EQ(run({"cp", docs_ / "Album", docs_ / "Copy"}), 2) << "a folder needs -r";
    ASSERT_EQ(run({"cp", "-r", docs_ / "Album", docs_ / "Copy"}), 0) << err_.str();
    for (const char* folder : {"Album", "Copy"}) {
        SCOPED_TRACE(folder);
        EXPECT_EQ(get(docs_ / folder), "The album\n");
        EXPECT_EQ(readFileBytes(docs_ / folder + ".description"), "The album\r\n");
        EXPECT_EQ(get(docs_ / folder + "/p.jpg"), "A photo\n");
        EXPECT_EQ(readFailsafeDB(failsafeFile(), docs_ / folder + "/p.jpg"), "A photo\r\n");
        EXPECT_EQ(std::filesystem::status(docs_ / folder + "/p.jpg").permissions(),
                  std::filesystem::perms(0640));
    }
    EXPECT_EQ(readFileBytes(docs_ / "00_index.txt"),
              "Copy         The album\r\nAlbum        The album\r\n");
}

// A cp on PATH that runs `before` and `after` it in the folder that holds the
// destination.
class CpBetween {
public:
    CpBetween(const TempDir& program, const std::string& folder, const std::string& before,
              const std::string& after)
        : m_path(std::getenv("PATH")) {
        const std::string cp = program.write(
            "tools/cp", "#!/bin/sh\ncd '" + folder + "' || exit 9\n" + before +
                            "\n/bin/cp \"$@\"\nstatus=$?\n" + after + "\nexit $status\n");
        EXPECT_EQ(::chmod(cp.c_str(), 0755), 0);
        EXPECT_EQ(::setenv("PATH", (program / "tools:" + m_path).c_str(), 1), 0);
    }
    ~CpBetween() { ::setenv("PATH", m_path.c_str(), 1); }

private:
    std::string m_path;
};

// cp -n skips a destination that appears while it runs and still exits 0: the copy must
// then fail and leave that file, and the stores, as the other program made them.
TEST_F(TransferTest, ADestinationThatAppearsDuringTheCopyIsLeftAsItWas) {
    describe(docs_.write("plan.txt", "x"), "Plan");
    const std::string destination = docs_ / "copy.txt", shared = sharedFiles();
    int exitCode = -1;
    {
        const CpBetween other(program_, docs_.path(), "printf theirs > copy.txt", "");
        exitCode = run({"cp", docs_ / "plan.txt", destination});
    }

    EXPECT_EQ(exitCode, 1) << err_.str();
    EXPECT_EQ(readFileBytes(destination), "theirs");
    EXPECT_EQ(get(destination), "(none)");
    EXPECT_EQ(sharedFiles(), shared);
    for (const auto& item : std::filesystem::directory_iterator(docs_.path()))
        EXPECT_FALSE(item.path().filename().string().starts_with(".veskor-copy-")) << item.path();
}

// Failsafe keys are upper-cased paths: a name that is not UTF-8 keeps its bytes, and
// folders whose names differ only in case share keys. Where the records of two
// entries cannot be told apart, the other entry's stay as they were.
TEST_F(TransferTest, FailsafeRecordsMoveOnTheirBytesAndOnlyWhereTheyCanBeToldApart) {
    describe(docs_.write("caf\xE9", "x"), "Latin");
    ASSERT_EQ(run({"mv", docs_ / "caf\xE9", docs_ / "th\xE9"}), 0) << err_.str();
    EXPECT_FALSE(hasRecord(docs_ / "caf\xE9"));
    EXPECT_EQ(readFailsafeDB(failsafeFile(), docs_ / "th\xE9"), "Latin\r\n");

    describe(docs_.write("tree/y", "x"), "Y");
    describe(docs_.write("Tree/z", "x"), "Z");
    ASSERT_EQ(run({"mv", docs_ / "tree", docs_ / "moved"}), 0) << err_.str();
    EXPECT_EQ(readFailsafeDB(failsafeFile(), docs_ / "Tree/z"), "Z\r\n");
    EXPECT_EQ(readFailsafeDB(failsafeFile(), docs_ / "moved/y"), "Y\r\n");

    describe(docs_.write("Other/w", "x"), "W");
    describe(docs_.write("source/w", "x"), "S");
    ASSERT_EQ(run({"mv", docs_ / "source", docs_ / "other"}), 0) << err_.str();
    EXPECT_EQ(readFailsafeDB(failsafeFile(), docs_ / "Other/w"), "W\r\n");
    EXPECT_FALSE(hasRecord(docs_ / "source/w"));
    EXPECT_EQ(get(docs_ / "other/w"), "S\n");
}

// The exported file of a name as long as the file system allows cannot exist: there
// is nothing to move, and nothing failed.
TEST_F(TransferTest, AMoveOfTheLongestNameSucceeds) {
    // 255 bytes in 85 characters, well within the longest path kept.
    std::string source, destination;
    for (int i = 0; i < 85; ++i) {
        source += "\xE2\x82\xAC";       // the euro sign
        destination += "\xE2\x84\xA2";  // the trade mark sign
    }
    describe(docs_.write(source, "x"), "Long");
    EXPECT_EQ(run({"mv", docs_ / source, docs_ / destination}), 0) << err_.str();
    EXPECT_EQ(err_.str(), "");
    EXPECT_EQ(get(docs_ / destination), "Long\n");
}

// Where a folder has a descript.ion, the entry leaves the source's and joins the
// destination's in that file's own form; a stale entry of the destination's name goes.
TEST_F(TransferTest, DescriptIonEntriesFollowTheMoveOrCopy) {
    docs_.write("s/descript.ion", "other.txt Other\r\n");
    docs_.write("d/descript.ion",
                "\xEF\xBB\xBF"
                "b.txt stale\r\n");
    describe(docs_.write("s/a.txt", "x"), "Line one\nline two");
    ASSERT_EQ(run({"mv", docs_ / "s/a.txt", docs_ / "d/b.txt"}), 0) << err_.str();
    EXPECT_EQ(readFileBytes(docs_ / "s/descript.ion"), "other.txt Other\r\n");
    EXPECT_EQ(readFileBytes(docs_ / "d/descript.ion"),
              "\xEF\xBB\xBF"
              "b.txt Line one\xC2\xA0line two\r\n");
    ASSERT_EQ(run({"cp", docs_ / "d/b.txt", docs_ / "s/c.txt"}), 0) << err_.str();
    EXPECT_EQ(readFileBytes(docs_ / "s/descript.ion"),
              "other.txt Other\r\nc.txt Line one\\nline two\x04\xC2\r\n");
    EXPECT_EQ(readFileBytes(docs_ / "d/descript.ion"),
              "\xEF\xBB\xBF"
              "b.txt Line one\xC2\xA0line two\r\n");

    // Nothing but the source's descript.ion knows n.txt, and with a text that `set`
    // refuses: the entry leaves, and none arrives.
    docs_.write("s/n.txt", "x");
    docs_.write("s/descript.ion", std::string("n.txt bad\0text\r\n", 16));
    EXPECT_EQ(run({"mv", docs_ / "s/n.txt", docs_ / "d/n.txt"}), 1);
    EXPECT_NE(err_.str().find("NUL byte"), std::string::npos) << err_.str();
    EXPECT_FALSE(std::filesystem::exists(docs_ / "s/descript.ion"));
    EXPECT_EQ(readFileBytes(docs_ / "d/descript.ion"),
              "\xEF\xBB\xBF"
              "b.txt Line one\xC2\xA0line two\r\n");
}

// A save, move or copy waits while another one holds the folder's turn, and then sees
// what that one left: here the lock is held by the test, standing in for a long save.
TEST_F(TransferTest, SavesMovesAndCopiesOfAFoldersItemsTakeTurns) {
    const std::tuple<const char*, const char*, const char*, std::string> calls[] = {
        {"a save", "set", "a.txt", "New"},
        {"a move", "mv", "b.txt", docs_ / "moved.txt"},
        {"a copy", "cp", "c.txt", docs_ / "copy.txt"},
    };
    for (const auto& [name, verb, source, last] : calls) {
        SCOPED_TRACE(name);
        describe(docs_.write(source, "x"), "Old");
        auto folderState = [&] {
            std::string names;
            for (const auto& item : std::filesystem::directory_iterator(docs_.path()))
                names += item.path().filename().string() + "\n";
            return names + sharedFiles();
        };
        const std::string before = folderState();
        FolderLock otherSave;
        ASSERT_FALSE(otherSave.acquire(docs_.path(), std::chrono::milliseconds(0)));
        int exitCode = -1;
        const Args args{verb, docs_ / source, last};
        std::thread call([&] { exitCode = run(args); });
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        EXPECT_EQ(folderState(), before) << "it went ahead while the turn was taken";
        otherSave.release();
        call.join();
        EXPECT_EQ(exitCode, 0) << err_.str();
        EXPECT_NE(folderState(), before);
    }
}

// Anyone who may write the destination's folder may put a link where the staging
// folder was while cp writes into it, and take it away before the copy is renamed
// into place: the copy still arrives, and nothing is written where the link pointed.
TEST_F(TransferTest, ACopyLandsOnlyInTheStagingFolderItMade) {
    describe(docs_.write("tool.desktop", "ours"), "Ours");
    const std::string trap = program_.mkdir("autostart");
    {
        const CpBetween swap(
            program_, docs_.path(),
            "for d in .veskor-copy-*; do mv \"$d\" elsewhere && ln -s '" + trap + "' \"$d\"; done",
            "rm .veskor-copy-*");
        EXPECT_EQ(run({"cp", docs_ / "tool.desktop", docs_ / "copy.desktop"}), 0) << err_.str();
    }
    EXPECT_TRUE(std::filesystem::is_empty(trap));
    EXPECT_EQ(readFileBytes(docs_ / "copy.desktop"), "ours");
    EXPECT_EQ(get(docs_ / "copy.desktop"), "Ours\n");
}

// A copy that was killed leaves its staging folder: the next copy into that folder
// removes it, without following the links in it, unless a copy still holds it or it
// is another user's. Listings never show one.
TEST_F(TransferTest, AbandonedStagingFoldersGoWithTheNextCopy) {
    const std::string kept = program_.write("kept.txt", "kept");
    const std::string abandoned = docs_.mkdir(".veskor-copy-AAAAAA"),
                      held = docs_.mkdir(".veskor-copy-BBBBBB");
    docs_.write(".veskor-copy-AAAAAA/part/of/a/tree", "partial");
    ASSERT_EQ(::symlink(kept.c_str(), (abandoned + "/part/link").c_str()), 0);
    ASSERT_EQ(::symlink(program_.path().c_str(), (abandoned + "/folder-link").c_str()), 0);
    ASSERT_EQ(::chmod((abandoned + "/part/of").c_str(), 0500), 0);
    FolderLock stillCopying;
    ASSERT_FALSE(stillCopying.acquire(held, std::chrono::milliseconds(0)));
    const std::string theirs = docs_.mkdir(".veskor-copy-CCCCCC");
    const bool asRoot = ::geteuid() == 0;
    ASSERT_TRUE(!asRoot || ::chown(theirs.c_str(), 65534, 65534) == 0);
    describe(docs_.write("plan.txt", "x"), "Plan");

    ASSERT_EQ(run({"ls", "-a", docs_.path()}), 0);
    EXPECT_EQ(out_.str(), "00_index.txt\t\nplan.txt\tPlan\n");
    ASSERT_EQ(run({"cp", docs_ / "plan.txt", docs_ / "copy.txt"}), 0) << err_.str();
    EXPECT_FALSE(std::filesystem::exists(abandoned));
    EXPECT_TRUE(std::filesystem::exists(held));
    EXPECT_EQ(std::filesystem::exists(theirs), asRoot) << "another user's";
    EXPECT_EQ(readFileBytes(kept), "kept");
}

dev_t deviceOf(const std::string& path) {
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0 ? st.st_dev : 0;
}

// The rename that works within a file system fails across two: the entry must arrive
// with its extended attributes (the summary stream), mode and times.
TEST_F(TransferTest, AMoveToAnotherFileSystemKeepsTheDescriptionInTheFileItself) {
    if (!std::filesystem::is_directory("/dev/shm"))
        GTEST_SKIP() << "no second file system: /dev/shm is missing";
    const TempDir shm("/dev/shm");
    if (deviceOf(shm.path()) == deviceOf(docs_.path()))
        GTEST_SKIP() << "no second file system: /dev/shm is on the test folder's";
    const std::string source = shm / "plan.txt", destination = docs_ / "plan.txt";
    writeFileBytes(source, "content");
    if (replaceStream(source, "probe", "") != StreamStatus::Ok)
        GTEST_SKIP() << "/dev/shm keeps no user extended attributes on this kernel";
    describe(source, "Kept across\nfile systems");
    ASSERT_EQ(::chmod(source.c_str(), 0604), 0);
    const auto mtime = std::filesystem::last_write_time(source);
    ASSERT_EQ(run({"mv", source, destination}), 0) << err_.str();
    EXPECT_FALSE(std::filesystem::exists(source));
    EXPECT_EQ(get(destination), "Kept across\nfile systems\n");
    EXPECT_EQ(err_.str(), "Loaded from NTFS\n");
    EXPECT_EQ(std::filesystem::status(destination).permissions(), std::filesystem::perms(0604));
    EXPECT_EQ(std::filesystem::last_write_time(destination), mtime);
}

}  // namespace
