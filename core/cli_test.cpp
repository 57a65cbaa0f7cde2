#include "core/cli.h"

#include <spawn.h>
#include <sys/wait.h>

#include <gtest/gtest.h>

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
    const std::string cli = std::string(VESKOR_BINARY_DIR) + "/veskor-cli";
    std::vector<pid_t> children;
    for (int i = 0; i < 12; ++i) {
        std::string target = docs.write("new" + std::to_string(i), "x");
        std::vector<std::string> args = {cli, "set", target, "text " + std::to_string(i)};
        std::vector<char*> argv;
        for (auto& a : args)
            argv.push_back(a.data());
        argv.push_back(nullptr);
        pid_t pid = 0;
        ASSERT_EQ(posix_spawn(&pid, cli.c_str(), nullptr, nullptr, argv.data(), environ), 0);
        children.push_back(pid);
    }
    for (pid_t pid : children) {
        int status = 0;
        waitpid(pid, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    LineReader reader(folder + "ver1.7.dat");
    std::string line;
    int begins = 0;
    while (reader.next(line))
        begins += line.rfind("Veskor failsafe DB 1.7 BEGIN ", 0) == 0;
    EXPECT_EQ(begins, 50012);
}

}  // namespace
