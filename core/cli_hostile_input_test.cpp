// veskor-cli against input that no program of ours wrote: store files and settings
// holding any bytes, descriptions that no store can take as they are, awkward target
// names, and a target that disappears while it is being saved.
#include <fcntl.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <thread>

#include "platform/code_page.h"
#include "platform/lookup.h"
#include "tests/cli_fixture.h"

extern char** environ;

namespace {

const std::string kTenMegabytes(10 << 20, 'x');

class HostileInputTest : public CliFixture {
protected:
    std::string dataFolder() const { return home_.dataHome() + "/Kelvane/Veskor/"; }
    std::string indexFile() const { return docs_ / "00_index.txt"; }
    std::string record(const std::string& text) const {
        return failsafeRecord(upperCase(target_), text);
    }
};

// Lines of other programs and other targets pass through a save as the bytes they
// were; only a missing line end is added (and, in the index, the head lines of items
// that do not exist are pruned unless last).
TEST_F(HostileInputTest, ASaveKeepsForeignBytesInTheDatabaseAndTheIndex) {
    const std::string beginLine = "Veskor failsafe DB 1.7 BEGIN " + upperCase(target_);
    const std::string binary("a\0\xC3\x28\xFF\r\n", 7);
    struct Case {
        const char* name;
        std::string bytes, keptInDatabase, keptInIndex;
    } const kCases[] = {
        {"a 10 MB line without a line end", kTenMegabytes, kTenMegabytes + "\r\n",
         kTenMegabytes + "\r\n"},
        {"NUL and bytes that are not UTF-8", binary, binary, binary},
        {"a lone CR and a lone LF", "one\rtwo\nthree", "one\r\ntwo\r\nthree\r\n", "three\r\n"},
        {"a begin line of the target, last", beginLine, beginLine + "\r\n", beginLine + "\r\n"},
    };
    for (const auto& [name, bytes, keptInDatabase, keptInIndex] : kCases) {
        SCOPED_TRACE(name);
        writeFileBytes(failsafeFile(), bytes);
        writeFileBytes(indexFile(), bytes);
        EXPECT_EQ(run({"stores", target_}), 0);
        ASSERT_EQ(run({"set", target_, "new"}), 0) << err_.str();
        EXPECT_TRUE(readFileBytes(failsafeFile()) == record("new") + keptInDatabase);
        EXPECT_TRUE(readFileBytes(indexFile()) == "plan.txt     new\r\n" + keptInIndex);
    }
}

TEST_F(HostileInputTest, SettingsOfAnyBytesAreReadOrReplacedByTheDefaults) {
    const std::string kDefaults =
        "[Veskor 1.9]\r\nCreate00index=1\r\nCreateExpDescNonNTFS=1\r\nDefaultGUIFont=0\r\n"
        "DefaultGUIFontSize=0\r\nHighDPIGUIAdjust=0\r\nAutoCreateExpDesc=0\r\nBgColor=0\r\n";
    struct Case {
        const char* name;
        std::string settings;
        bool replaced, indexWritten;
    } const kCases[] = {
        {"no header, NUL and non-UTF-8 bytes", std::string("\0\xFF[Veskor 1.9]\0", 15), true, true},
        {"a 10 MB value, lone CRs", "[Veskor 1.9]\rBgColor=" + kTenMegabytes + "\rCreate00index=0",
         false, false},
        {"a NUL before the key", std::string("[Veskor 1.9]\r\n\0Create00index=0", 31), false, true},
    };
    for (const auto& [name, settings, replaced, indexWritten] : kCases) {
        SCOPED_TRACE(name);
        std::remove(indexFile().c_str());
        writeFileBytes(dataFolder() + "config.dat", settings);
        ASSERT_EQ(run({"set", target_, "text"}), 0) << err_.str();
        EXPECT_EQ(err_.str(), "");
        EXPECT_TRUE(readFileBytes(dataFolder() + "config.dat") ==
                    (replaced ? kDefaults : settings));
        EXPECT_EQ(fileExists(indexFile()), indexWritten);
    }
}

TEST_F(HostileInputTest, ADescriptionIsStoredAlikeEverywhereOrRefused) {
    struct Case {
        const char* name;
        std::string input;
        int exitCode;
        std::string message, readBack, stored;
    } const kCases[] = {
        {"10 MB without a line end", kTenMegabytes, 64,
         "veskor-cli: the description has 10485760 characters (line breaks count 2); at most "
         "30000 fit.\n",
         "", ""},
        {"a NUL byte", std::string("before\0after", 12), 64,
         "veskor-cli: the description holds a NUL byte, which the file's metadata cannot keep.\n",
         "", ""},
        {"Windows-1252 bytes", "caf\xE9 \x80", 0, "", "caf\xC3\xA9 \xE2\x82\xAC",
         "caf\xC3\xA9 \xE2\x82\xAC"},
        {"lone CRs", "a\rb\r", 0, "", "a\nb", "a\r\nb"},
    };
    for (const auto& [name, input, exitCode, message, readBack, stored] : kCases) {
        SCOPED_TRACE(name);
        std::remove(failsafeFile().c_str());
        EXPECT_EQ(run({"set", target_}, input), exitCode);
        EXPECT_EQ(err_.str(), message);
        EXPECT_EQ(fileExists(failsafeFile()), exitCode == 0);
        if (exitCode != 0)
            continue;
        ASSERT_EQ(run({"get", target_}), 0);
        EXPECT_EQ(out_.str(), readBack);
        EXPECT_EQ(readFileBytes(failsafeFile()), record(stored));
    }
}

TEST_F(HostileInputTest, AwkwardTargetNamesRoundTrip) {
    const std::pair<std::string, std::string> kCases[] = {
        {"my plan.txt", "\"my plan.txt\"\r\n             text\r\n"},
        {"say\"hi\".txt", "say\"hi\".txt  text\r\n"},
        {"r\xC3\xA9sum\xC3\xA9-v.txt", "r\xC3\xA9sum\xC3\xA9-v.txt text\r\n"},  // 14 bytes
    };
    for (const auto& [file, indexHead] : kCases) {
        SCOPED_TRACE(file);
        std::remove(indexFile().c_str());
        const std::string target = docs_.write(file, "x");
        ASSERT_EQ(run({"set", target, "text"}), 0) << err_.str();
        EXPECT_EQ(readFileBytes(indexFile()), indexHead);
        ASSERT_EQ(run({"get", target}), 0);
        EXPECT_EQ(out_.str(), "text");
        EXPECT_NE(readFileBytes(failsafeFile()).find(upperCase(target)), std::string::npos);
    }
}

// The target vanishes after the save has checked it and before it reaches the file's
// metadata: the text still ends up in the file stores, the exported file standing in
// for the metadata.
TEST(HostileInputProcessTest, ATargetDeletedMidSaveKeepsTheTextInTheFileStores) {
    TempHome home;
    TempDir docs;
    const std::string target = docs.write("plan.txt", "x");
    const std::string folder = home.dataHome() + "/Kelvane/Veskor/failsafe db";
    std::filesystem::create_directories(folder);
    // Hold the database's lock, so that the save waits inside its first store.
    const int lock = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(::flock(lock, LOCK_EX), 0);
    std::string cli = std::string(VESKOR_BINARY_DIR) + "/veskor-cli", verb = "set",
                text = "kept text", path = target;
    char* argv[] = {cli.data(), verb.data(), path.data(), text.data(), nullptr};
    pid_t pid = 0;
    ASSERT_EQ(posix_spawn(&pid, cli.c_str(), nullptr, nullptr, argv, environ), 0);
    // The save is past its existence check once it has the folder open for the lock.
    const std::string fds = "/proc/" + std::to_string(pid) + "/fd";
    for (bool waiting = false; !waiting;) {
        std::error_code ec;
        for (const auto& fd : std::filesystem::directory_iterator(fds, ec))
            waiting = waiting || std::filesystem::read_symlink(fd.path(), ec) == folder;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    std::remove(target.c_str());
    ::close(lock);

    int status = 0;
    waitpid(pid, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_EQ(readFileBytes(target + ".description"), "kept text\r\n");
    EXPECT_NE(readFileBytes(folder + "/ver1.7.dat").find("\r\nkept text\r\n"), std::string::npos);
    EXPECT_EQ(readFileBytes(docs / "00_index.txt"), "plan.txt     kept text\r\n");
}

}  // namespace
