#include "platform/atomic_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <tuple>

#include "platform/files.h"
#include "platform/line_reader.h"
#include "platform/regular_file.h"
#include "tests/child_process.h"
#include "tests/temp_dir.h"

namespace {

std::set<std::string> namesIn(const std::string& folder) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.insert(entry.path().filename());
    return names;
}

mode_t modeOf(const std::string& path) {
    struct stat st {};
    return ::lstat(path.c_str(), &st) == 0 ? st.st_mode : 0;
}

}  // namespace

// A temporary name that someone else holds is passed over and left alone, and an
// abandoned replacement leaves nothing of its own behind.
TEST(AtomicFileTest, ReplacesTheWholeFileOrLeavesTheOldOne) {
    TempDir dir;
    const std::string path = dir.write("db.dat", "old content that is longer\r\n");
    const std::string replaced = "new\r\n" + std::string(200000, 'z');
    AtomicFile out(path);
    ASSERT_FALSE(out.open());
    EXPECT_EQ(out.tempPath().substr(0, path.size() + 1), path + ".");
    EXPECT_TRUE(out.tempPath().ends_with(".tmp"));
    out.writeLine("new");
    out.write(std::string(200000, 'z'));
    ASSERT_FALSE(out.commit());
    EXPECT_EQ(readFileBytes(path), replaced);

    writeFileBytes(path + ".tmp", "someone else's");
    ASSERT_FALSE(replaceFileAtomically(path, "second"));
    {
        AtomicFile abandoned(path);
        ASSERT_FALSE(abandoned.open());
        abandoned.write("never committed");
    }
    EXPECT_EQ(namesIn(dir.path()), (std::set<std::string>{"db.dat", "db.dat.tmp"}));
    EXPECT_EQ(readFileBytes(path + ".tmp"), "someone else's");
    EXPECT_EQ(readFileBytes(path), "second");

    ASSERT_EQ(::chmod(path.c_str(), 0444), 0);  // refused even to root
    EXPECT_EQ(replaceFileAtomically(path, "new"), std::errc::permission_denied);
    EXPECT_EQ(readFileBytes(path), "second");
}

// The permission bits carry over, never the ones that run a program with its owner's
// rights or pin a folder's entries; private data is 0600 whatever the old file was.
TEST(AtomicFileTest, AReplacedFileKeepsItsModeAndANewOneGetsTheUmasks) {
    TempDir dir;
    const mode_t oldUmask = ::umask(022);
    enum class Kind { Plain, Private, Limited };
    // name, mode of the old file (0: none), umask, kind, mode of the new file
    const std::tuple<const char*, mode_t, mode_t, Kind, mode_t> rows[] = {
        {"private file stays private", 0600, 022, Kind::Plain, 0600},
        {"group-writable stays so", 0664, 077, Kind::Plain, 0664},
        {"new file, strict umask", 0, 027, Kind::Plain, 0640},
        {"set-user-ID dropped", 04755, 022, Kind::Plain, 0755},
        {"set-group-ID and sticky dropped", 03775, 022, Kind::Plain, 0775},
        {"private data made private", 0644, 022, Kind::Private, 0600},
        {"new private data", 0, 0, Kind::Private, 0600},
        {"new file within a limit", 0, 002, Kind::Limited, 0640},
        {"a limit leaves an old file's mode", 0664, 022, Kind::Limited, 0664},
    };
    for (const auto& [name, oldMode, mask, kind, expected] : rows) {
        SCOPED_TRACE(name);
        const std::string path = dir / name;
        if (oldMode != 0) {
            writeFileBytes(path, "old");
            ASSERT_EQ(::chmod(path.c_str(), oldMode), 0);
        }
        ::umask(mask);
        AtomicFile out(path);
        if (kind == Kind::Private)
            out.makePrivate();
        if (kind == Kind::Limited)
            out.limitNewMode(0640);
        ASSERT_FALSE(out.open());
        out.write("new");
        ASSERT_FALSE(out.commit());
        EXPECT_EQ(modeOf(path) & 07777, expected);
    }
    ::umask(oldUmask);
}

// Root hands the new file to the old one's owner only when it read the old one through
// the descriptor it passes: what it checked is what it carries.
TEST(AtomicFileTest, RootKeepsTheOwnerOnlyOfAFileItRead) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can give a file to another owner";
    for (const bool read : {true, false}) {
        SCOPED_TRACE(read ? "read through the descriptor" : "not read");
        TempDir dir;
        const std::string path = dir.write("shared.dat", "old");
        ASSERT_EQ(::chown(path.c_str(), 1234, 5678), 0);
        RegularFile old;
        ASSERT_FALSE(read && old.open(path));
        AtomicFile out(path);
        ASSERT_FALSE(out.open(old));
        out.write("new");
        ASSERT_FALSE(out.commit());
        struct stat st {};
        ASSERT_EQ(::stat(path.c_str(), &st), 0);
        EXPECT_EQ(st.st_uid, read ? 1234u : 0u);
        EXPECT_EQ(st.st_gid, read ? 5678u : 0u);
    }
}

// Whatever is put at the file's name that is not a regular file is neither read nor
// replaced: a link to another user's file or to a system program, a FIFO, a folder.
TEST(AtomicFileTest, NeitherReadsNorReplacesAnythingButARegularFile) {
    TempDir dir;
    const std::string secret = dir.write("private/key", "SECRET\r\n");
    ASSERT_EQ(::chmod(secret.c_str(), 0600), 0);
    const std::string program = dir.write("program",
                                          "\x7f"
                                          "ELF");
    ASSERT_EQ(::chmod(program.c_str(), 04755), 0);
    // name, how it is made
    const std::tuple<const char*, std::function<int(const std::string&)>> rows[] = {
        {"link to a private file", [&](auto& p) { return ::symlink(secret.c_str(), p.c_str()); }},
        {"link to a set-user-ID program",
         [&](auto& p) { return ::symlink(program.c_str(), p.c_str()); }},
        {"dangling link", [&](auto& p) { return ::symlink((dir / "gone").c_str(), p.c_str()); }},
        {"FIFO", [](auto& p) { return ::mkfifo(p.c_str(), 0666); }},
        {"folder", [](auto& p) { return ::mkdir(p.c_str(), 0755); }},
    };
    for (const auto& [name, make] : rows) {
        SCOPED_TRACE(name);
        const std::string path = dir / name;
        ASSERT_EQ(make(path), 0);
        const mode_t before = modeOf(path);
        // In a child: a FIFO read the ordinary way waits for a writer for ever.
        EXPECT_TRUE(inChild(
            [&] {
                std::string bytes, line;
                LineReader reader(path);
                return readWholeFile(path, bytes) && bytes.empty() && !reader.next(line) &&
                       reader.error() && replaceFileAtomically(path, "new\r\n");
            },
            5));
        EXPECT_EQ(modeOf(path), before);
        for (const std::string& left : namesIn(dir.path()))
            EXPECT_FALSE(left.ends_with(".tmp")) << left;
    }
    EXPECT_EQ(readFileBytes(secret), "SECRET\r\n");
    EXPECT_EQ(readFileBytes(program),
              "\x7f"
              "ELF");
    EXPECT_EQ(modeOf(program) & 07777, 04755u);
}

// In a sticky folder, as /tmp and many shares are, no user may remove another's file: a
// temporary name planted there once blocked every save.
TEST(AtomicFileTest, AnotherUserCannotBlockTheTemporaryName) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "needs root to act as two users";
    TempDir dir;
    const std::string shared = dir.mkdir("shared");
    ASSERT_EQ(::chmod(dir.path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod(shared.c_str(), 01777), 0);
    const std::string path = shared + "/00_index.txt";
    ASSERT_TRUE(inChild([&] { return replaceFileAtomically(path, "ours\r\n").value() == 0; }, 10,
                        kThirdUser));
    ASSERT_TRUE(inChild(
        [&] {
            writeFileBytes(path + ".tmp", "planted");
            return ::chmod((path + ".tmp").c_str(), 0444) == 0;
        },
        10, kOtherUser));
    EXPECT_TRUE(inChild([&] { return replaceFileAtomically(path, "again\r\n").value() == 0; }, 10,
                        kThirdUser));
    EXPECT_EQ(readFileBytes(path), "again\r\n");
    EXPECT_EQ(readFileBytes(path + ".tmp"), "planted");
    EXPECT_EQ(namesIn(shared).size(), 2u);
}
