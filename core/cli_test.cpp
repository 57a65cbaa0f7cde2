#include "core/cli.h"

#include <spawn.h>
#include <sys/wait.h>

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <sstream>

#include "platform/code_page.h"
#include "platform/line_reader.h"
#include "platform/lookup.h"
#include "platform/xattr.h"
#include "tests/temp_dir.h"

extern char** environ;

namespace {

class CliTest : public ::testing::Test {
protected:
    CliTest() { target_ = docs_.write("plan.txt", "content"); }

    int run(std::vector<std::string> args, const std::string& input = "") {
        std::istringstream in(input);
        out_.str("");
        err_.str("");
        return runCli(args, program_.path(), {in, out_, err_});
    }

    std::string failsafeFile() const {
        return home_.dataHome() + "/Kelvane/Veskor/failsafe db/ver1.7.dat";
    }

    TempHome home_;
    TempDir program_;
    TempDir docs_;
    std::string target_;
    std::ostringstream out_, err_;
};

TEST_F(CliTest, SetThenGetGivesTheTextBackWithUnixLineBreaks) {
    ASSERT_EQ(run({"set", target_, "First line\nSecond"}), 0) << err_.str();
    EXPECT_EQ(run({"get", target_}), 0);
    EXPECT_EQ(out_.str(), "First line\nSecond");
    EXPECT_EQ(err_.str(), "Loaded from NTFS\n");
    std::string stream;
    ASSERT_EQ(readStream(target_, "\x05SummaryInformation", stream), StreamStatus::Ok);
    EXPECT_NE(stream.find("First line\r\nSecond"), std::string::npos);
}

TEST_F(CliTest, GetPipedIntoSetChangesNothing) {
    ASSERT_EQ(run({"set", "--export", target_, "one\ntwo"}), 0) << err_.str();
    const std::string exported = readFileBytes(target_ + ".description");
    const std::string failsafe = readFileBytes(failsafeFile());
    std::remove(target_.c_str());
    docs_.write("plan.txt", "content");  // no streams: the exported file is read
    ASSERT_EQ(run({"get", target_}), 0);
    EXPECT_EQ(err_.str(), "Loaded from exported description\n");
    const std::string piped = out_.str();
    ASSERT_EQ(run({"set", "--export", target_}, piped), 0) << err_.str();
    EXPECT_EQ(readFileBytes(target_ + ".description"), exported);
    EXPECT_EQ(readFileBytes(failsafeFile()), failsafe);
}

TEST_F(CliTest, ReportsEachOutcomeWithItsExitCode) {
    EXPECT_EQ(run({"get", target_}), 3);
    EXPECT_EQ(err_.str(), "Description not found\n");
    EXPECT_EQ(out_.str(), "");

    EXPECT_EQ(run({"set", target_, ""}), 1);  // "Delete existing description?" answered No
    EXPECT_EQ(err_.str(), "Veskor: Delete existing description? [answered No]\n");
    EXPECT_EQ(run({"set", "--yes", target_, ""}), 0);

    EXPECT_EQ(run({"set", target_, std::string(30001, 'x')}), 64);
    // A line break counts two characters, as CR LF.
    EXPECT_EQ(run({"set", target_, std::string(29998, 'x') + "\nx"}), 64);
    EXPECT_EQ(run({"set", target_, std::string(29997, 'x') + "\nx"}), 0);

    EXPECT_EQ(run({"get", docs_.path()}), 2);
    EXPECT_EQ(err_.str(), "Veskor: You cannot create descriptions for the root folder.\n");
    EXPECT_EQ(run({"frobnicate", target_}), 64);
    EXPECT_EQ(run({"get"}), 64);
    EXPECT_EQ(run({"--help"}), 0);
    EXPECT_NE(out_.str().find("veskor-cli set [--export] [--yes] PATH [TEXT]"), std::string::npos);
}

TEST_F(CliTest, AMissingTargetShowsItsExportedFileAndNeverSaves) {
    docs_.write("gone.txt.description", "kept text\r\nline two\r\n");
    const std::string gone = docs_ / "gone.txt";
    EXPECT_EQ(run({"set", gone, "new"}), 2);
    EXPECT_EQ(out_.str(), "kept text\nline two\n");
    EXPECT_EQ(err_.str(), "Veskor: Error: file not found.\n\"" + gone + "\"\n");
    EXPECT_EQ(readFileBytes(gone + ".description"), "kept text\r\nline two\r\n");
    EXPECT_FALSE(fileExists(failsafeFile()));
}

TEST_F(CliTest, ListsWhatEachStoreHolds) {
    ASSERT_EQ(run({"set", target_, "hello"}), 0);
    ASSERT_EQ(run({"stores", target_}), 0);
    const std::string expected = "== exported description file (" + target_ +
                                 ".description)\n  (nothing)\n"
                                 "== old stream (user.description)\n  (nothing)\n"
                                 "== summary stream (user.\\005SummaryInformation)\n  hello\n"
                                 "== folder index (" +
                                 docs_.path() +
                                 "00_index.txt)\n  hello\n"
                                 "== failsafe database (" +
                                 failsafeFile() + ")\n  hello\n";
    EXPECT_EQ(out_.str(), expected);
}

// Starts the real veskor-cli with `extraEnv` ("NAME=value") added to the environment.
pid_t startCli(const std::vector<std::string>& args,
               const std::vector<std::string>& extraEnv = {}) {
    const std::string cli = std::string(VESKOR_BINARY_DIR) + "/veskor-cli";
    std::vector<std::string> strings = {cli};
    strings.insert(strings.end(), args.begin(), args.end());
    std::vector<std::string> env = extraEnv;
    for (char** e = environ; *e; ++e)
        env.emplace_back(*e);
    std::vector<char*> argv, envp;
    for (auto& a : strings)
        argv.push_back(a.data());
    for (auto& e : env)
        envp.push_back(e.data());
    argv.push_back(nullptr);
    envp.push_back(nullptr);
    pid_t pid = 0;
    if (posix_spawn(&pid, cli.c_str(), nullptr, nullptr, argv.data(), envp.data()) != 0)
        ADD_FAILURE() << "cannot start " << cli;
    return pid;
}

int waitFor(pid_t pid) {
    int status = 0;
    waitpid(pid, &status, 0);
    return status;
}

void putFile(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

// Many running copies saving different targets at once must not lose a record.
TEST(CliProcessTest, ConcurrentSavesKeepEveryRecord) {
    TempHome home;
    TempDir docs;
    const std::string folder = home.dataHome() + "/Kelvane/Veskor/failsafe db/";
    docs.mkdir("x");
    {
        std::ofstream db(docs / "prefill");
        for (int i = 0; i < 50000; ++i) {
            std::string key = upperCase(docs / ("old" + std::to_string(i)));
            db << "Veskor failsafe DB 1.7 BEGIN " << key << "\r\nrecord " << i
               << "\r\nVeskor failsafe DB 1.7 END " << key << "\r\n";
        }
    }
    ASSERT_EQ(std::system(("mkdir -p '" + folder + "' && mv '" + docs / "prefill" + "' '" + folder +
                           "ver1.7.dat'")
                              .c_str()),
              0);
    std::vector<pid_t> children;
    for (int i = 0; i < 12; ++i) {
        std::string target = docs.write("new" + std::to_string(i), "x");
        children.push_back(startCli({"set", target, "text " + std::to_string(i)}));
    }
    for (pid_t pid : children) {
        int status = waitFor(pid);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    LineReader reader(folder + "ver1.7.dat");
    std::string line;
    int begins = 0;
    while (reader.next(line))
        begins += line.rfind("Veskor failsafe DB 1.7 BEGIN ", 0) == 0;
    EXPECT_EQ(begins, 50012);
}

// A save killed right after any step that changes a file on disk leaves the failsafe
// database and the index each byte for byte in its old or its new version: never a
// part of one, never missing; and the next save still works.
TEST(CliProcessTest, ASaveKilledAtAnyStepLeavesEachFileOldOrNew) {
    TempHome home;
    TempDir docs;
    const std::string target = docs.write("plan.txt", "x");
    docs.write("kept.txt", "x");
    ASSERT_EQ(waitFor(startCli({"set", target, "old text"})), 0);  // settings, database, index
    const std::string db = home.dataHome() + "/Kelvane/Veskor/failsafe db/ver1.7.dat";
    const std::string index = docs / "00_index.txt";

    // Large enough that each file is written in several pieces.
    std::string oldDb = readFileBytes(db),
                oldIndex = readFileBytes(index) + "kept.txt     body\r\n";
    for (int i = 0; i < 4000; ++i) {
        const std::string key = "/OTHER/FILE" + std::to_string(i);
        oldDb += "Veskor failsafe DB 1.7 BEGIN " + key +
                 "\r\nrecord\r\nVeskor failsafe DB 1.7 END " + key + "\r\n";
        oldIndex += "             continued " + std::to_string(i) + "\r\n";
    }
    auto restoreOld = [&] {
        putFile(db, oldDb);
        putFile(index, oldIndex);
    };
    restoreOld();
    ASSERT_EQ(waitFor(startCli({"set", target, "new text"})), 0);
    const std::string newDb = readFileBytes(db), newIndex = readFileBytes(index);
    ASSERT_NE(newDb, oldDb);
    ASSERT_NE(newIndex, oldIndex);

    int kills = 0;
    bool sawNewDbWithOldIndex = false;
    for (int step = 1; step < 100; ++step) {
        SCOPED_TRACE("killed after step " + std::to_string(step));
        restoreOld();
        const int status =
            waitFor(startCli({"set", target, "new text"},
                             {"VESKOR_TEST_STOP_AFTER_WRITES=" + std::to_string(step)}));
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
