#include "core/cli.h"

#include <spawn.h>
#include <sys/wait.h>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>

#include "platform/code_page.h"
#include "platform/line_reader.h"
#include "platform/lookup.h"
#include "tests/cli_fixture.h"

extern char** environ;

namespace {

using CliTest = CliFixture;

TEST_F(CliTest, SetThenGetGivesTheTextBackWithUnixLineBreaks) {
    ASSERT_EQ(run({"set", target_, "First line\nSecond"}), 0) << err_.str();
    EXPECT_EQ(run({"get", target_}), 0);
    EXPECT_EQ(out_.str(), "First line\nSecond");
    EXPECT_EQ(err_.str(), "Loaded from NTFS\n");
}

TEST_F(CliTest, GetPipedIntoSetChangesNothing) {
    ASSERT_EQ(run({"set", "--export", target_, "one\ntwo"}), 0) << err_.str();
    const std::string exported = readFileBytes(target_ + ".description");
    const std::string failsafe = readFileBytes(failsafeFileOf(home_));
    std::remove(target_.c_str());
    docs_.write("plan.txt", "content");  // no streams: the exported file is read
    ASSERT_EQ(run({"get", target_}), 0);
    EXPECT_EQ(err_.str(), "Loaded from exported description\n");
    ASSERT_EQ(run({"set", "--export", target_}, out_.str()), 0) << err_.str();
    EXPECT_EQ(readFileBytes(target_ + ".description"), exported);
    EXPECT_EQ(readFileBytes(failsafeFileOf(home_)), failsafe);
}

TEST_F(CliTest, ReportsEachOutcomeWithItsExitCode) {
    EXPECT_EQ(run({"get", target_}), 3);
    EXPECT_EQ(err_.str(), "Description not found\n");
    EXPECT_EQ(run({"set", target_, ""}), 1);
    EXPECT_EQ(err_.str(), "Veskor: Delete existing description? [answered No]\n");
    EXPECT_EQ(run({"set", "--yes", target_, ""}), 0);
    // A line break counts two characters, as CR LF.
    EXPECT_EQ(run({"set", target_, std::string(29998, 'x') + "\nx"}), 64);
    EXPECT_EQ(run({"set", target_, std::string(29997, 'x') + "\nx"}), 0);
    EXPECT_EQ(run({"get", docs_.path()}), 2);
    EXPECT_EQ(err_.str(), "Veskor: You cannot create descriptions for the root folder.\n");
    EXPECT_EQ(run({"frobnicate", target_}), 64);
    EXPECT_EQ(run({"get"}), 64);
    EXPECT_EQ(run({"--help"}), 0);
}

TEST_F(CliTest, AMissingTargetShowsItsExportedFileAndNeverSaves) {
    docs_.write("gone.txt.description", "kept text\r\nline two\r\n");
    const std::string gone = docs_ / "gone.txt";
    EXPECT_EQ(run({"set", gone, "new"}), 2);
    EXPECT_EQ(out_.str(), "kept text\nline two\n");
    EXPECT_EQ(err_.str(), "Veskor: Error: file not found.\n\"" + gone + "\"\n");
    EXPECT_EQ(readFileBytes(gone + ".description"), "kept text\r\nline two\r\n");
    EXPECT_FALSE(fileExists(failsafeFileOf(home_)));
}

TEST_F(CliTest, ListsWhatEachStoreHolds) {
    ASSERT_EQ(run({"set", target_, "hello"}), 0);
    ASSERT_EQ(run({"stores", target_}), 0);
    EXPECT_EQ(out_.str(), "== exported description file (" + target_ +
                              ".description)\n  (nothing)\n"
                              "== old stream (user.description)\n  (nothing)\n"
                              "== summary stream (user.\\005SummaryInformation)\n  hello\n"
                              "== folder index (" +
                              docs_.path() + "00_index.txt)\n  hello\n== failsafe database (" +
                              failsafeFileOf(home_) + ")\n  hello\n");
}

// Starts the real veskor-cli, `extraEnv` ("NAME=value") added to the environment.
pid_t startCli(std::vector<std::string> args, std::string extraEnv = "") {
    args.insert(args.begin(), std::string(VESKOR_BINARY_DIR) + "/veskor-cli");
    std::vector<char*> argv, envp;
    for (auto& a : args)
        argv.push_back(a.data());
    if (!extraEnv.empty())
        envp.push_back(extraEnv.data());
    for (char** e = environ; *e; ++e)
        envp.push_back(*e);
    argv.push_back(nullptr);
    envp.push_back(nullptr);
    pid_t pid = 0;
    EXPECT_EQ(posix_spawn(&pid, argv[0], nullptr, nullptr, argv.data(), envp.data()), 0);
    return pid;
}

int waitFor(pid_t pid) {
    int status = 0;
    waitpid(pid, &status, 0);
    return status;
}

TEST(CliProcessTest, ConcurrentSavesKeepEveryRecord) {
    TempHome home;
    TempDir docs;
    std::string db;
    for (int i = 0; i < 50000; ++i)
        db += failsafeRecord(upperCase(docs / ("old" + std::to_string(i))), "record");
    writeFileBytes(failsafeFileOf(home), db);
    std::vector<pid_t> children;
    for (int i = 0; i < 12; ++i) {
        const std::string n = std::to_string(i);
        children.push_back(startCli({"set", docs.write("new" + n, "x"), "text " + n}));
    }
    for (pid_t pid : children)
        EXPECT_EQ(waitFor(pid), 0);
    LineReader reader(failsafeFileOf(home));
    int begins = 0;
    for (std::string line; reader.next(line);)
        begins += line.rfind("Veskor failsafe DB 1.7 BEGIN ", 0) == 0;
    EXPECT_EQ(begins, 50012);
}

// A save killed right after any step that changes a file on disk leaves the failsafe
// database and the index each in its old or its new version, byte for byte.
TEST(CliProcessTest, ASaveKilledAtAnyStepLeavesEachFileOldOrNew) {
    TempHome home;
    TempDir docs;
    const std::string target = docs.write("plan.txt", "x");
    docs.write("kept.txt", "x");
    ASSERT_EQ(waitFor(startCli({"set", target, "old text"})), 0);
    const std::string db = failsafeFileOf(home), index = docs / "00_index.txt";
    // Large enough that each file is written in several pieces.
    std::string oldDb = readFileBytes(db),
                oldIndex = readFileBytes(index) + "kept.txt     body\r\n";
    for (int i = 0; i < 4000; ++i) {
        oldDb += failsafeRecord("/OTHER/FILE" + std::to_string(i), "record");
        oldIndex += "             continued " + std::to_string(i) + "\r\n";
    }
    auto restoreOld = [&] {
        writeFileBytes(db, oldDb);
        writeFileBytes(index, oldIndex);
    };
    restoreOld();
    ASSERT_EQ(waitFor(startCli({"set", target, "new text"})), 0);
    const std::string newDb = readFileBytes(db), newIndex = readFileBytes(index);
    ASSERT_TRUE(newDb != oldDb && newIndex != oldIndex);

    int kills = 0;
    bool sawNewDbWithOldIndex = false;
    for (int step = 1; step < 100; ++step) {
        SCOPED_TRACE("killed after step " + std::to_string(step));
        restoreOld();
        const int status = waitFor(startCli(
            {"set", target, "new text"}, "VESKOR_TEST_STOP_AFTER_WRITES=" + std::to_string(step)));
        const std::string dbNow = readFileBytes(db), indexNow = readFileBytes(index);
        if (WIFEXITED(status)) {
            EXPECT_EQ(WEXITSTATUS(status), 0);
            EXPECT_TRUE(dbNow == newDb && indexNow == newIndex);
            break;
        }
        ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
        ++kills;
        EXPECT_TRUE(dbNow == oldDb || dbNow == newDb) << dbNow.size() << " bytes";
        EXPECT_TRUE(indexNow == oldIndex || indexNow == newIndex) << indexNow.size() << " bytes";
        sawNewDbWithOldIndex = sawNewDbWithOldIndex || (dbNow == newDb && indexNow == oldIndex);
    }
    EXPECT_GE(kills, 12);
    EXPECT_TRUE(sawNewDbWithOldIndex);
}

}  // namespace
