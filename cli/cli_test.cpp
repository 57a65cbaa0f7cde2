// veskor-cli run in-process on a target "plan.txt" in a temporary home, and as a real
// process where a test needs several at once, or kills or races one mid-save.
#include "cli/cli.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <thread>

#include "cli/json_lines.h"
#include "platform/code_page.h"
#include "platform/lookup.h"
#include "tests/cli_fixture.h"
#include "tests/loop_volume.h"

extern char** environ;

namespace {

using Args = std::vector<std::string>;

const std::string kTenMegabytes(10 << 20, 'x');
// ESC, BEL, DEL and the second byte of CSI as a C1 control.
const std::string kRawControls = "\x1b\x07\x7F\x9B";

class CliTest : public CliFixture {
protected:
    std::string indexFile() const { return docs_ / "00_index.txt"; }
    // A failsafe record as the database keeps it; `key` is the upper-cased path.
    std::string record(const std::string& text, std::string key = "") const {
        key = key.empty() ? upperCase(target_) : key;
        return "Veskor failsafe DB 1.7 BEGIN " + key + "\r\n" + text +
               "\r\nVeskor failsafe DB 1.7 END " + key + "\r\n";
    }

    std::string target_ = docs_.write("plan.txt", "content");
};

// The name has blanks, quotes and non-ASCII letters. Standard input loses one final line
// break; bytes that are not UTF-8 are read as Windows-1252 and a lone CR is a line break,
// as in every store.
TEST_F(CliTest, EveryStoreRoundTripsAndGetPipedIntoSetChangesNothing) {
    const std::string target = docs_.write("my \"plan\" r\xC3\xA9sum\xC3\xA9.txt", "x");
    const std::string cafe = "caf\xC3\xA9 \xE2\x82\xAC";
    ASSERT_EQ(run({"set", "--export", target}, "caf\xE9 \x80\rSecond\n"), 0) << err_.str();
    ASSERT_EQ(run({"get", target}), 0);
    EXPECT_EQ(out_.str(), cafe + "\nSecond\n");
    const std::string stored =
        readFileBytes(target + ".description") + readFileBytes(failsafeFile());
    // What get printed, and the same with Windows line ends.
    for (const std::string& input : {out_.str(), cafe + "\r\nSecond\r\n"}) {
        ASSERT_EQ(run({"set", "--export", target}, input), 0) << err_.str();
        EXPECT_EQ(readFileBytes(target + ".description") + readFileBytes(failsafeFile()), stored);
    }
    EXPECT_EQ(readFileBytes(indexFile()),
              "\"my \"plan\" r\xC3\xA9sum\xC3\xA9.txt\"\r\n             " + cafe +
                  "\r\n             Second\r\n");
    ASSERT_EQ(run({"stores", target}), 0);
    const std::string lines = "  " + cafe + "\n  Second\n";
    EXPECT_EQ(out_.str(), "== exported description file (" + target + ".description)\n" + lines +
                              "== old stream (user.description)\n  (nothing)\n" +
                              "== summary stream (user.\\005SummaryInformation)\n" + lines +
                              "== folder index (" + indexFile() + ")\n" + lines +
                              "== failsafe database (" + failsafeFile() + ")\n" + lines +
                              "== file manager comment (user.xdg.comment)\n" + lines +
                              "== descript.ion (" + docs_.path() + "descript.ion)\n  (nothing)\n");
}

// A refused text (exit 64) reaches no store. A missing target shows its exported file,
// read as every file of the program is (not UTF-8 means Windows-1252), and never saves.
TEST_F(CliTest, AnswersEachCallWithItsExitCodeAndOutput) {
    const std::string n30000 = std::string(29997, 'x') + "\nx";  // a line break counts 2
    const std::string gone = docs_ / "gone.txt";
    docs_.write("gone.txt.description", "First\nSecond caf\xE9\r\nThird");
    const std::string tooLong =
        "veskor-cli: the description has 30001 characters (line breaks count 2); at most "
        "30000 fit.\n";
    const std::string nul =
        "veskor-cli: the description holds a NUL byte, which the file's metadata cannot keep.\n";
    const std::string no = "Veskor: Delete existing description? [answered No]\n";
    const std::string root = "Veskor: You cannot create descriptions for the root folder.\n";
    const std::string notFound = "Veskor: Error: file not found.\n\"" + gone + "\"\n";
    const std::string shown = "First\nSecond caf\xC3\xA9\nThird\n";
    // name, call, exit code, standard output, standard error
    const std::tuple<const char*, Args, int, std::string, std::string> rows[] = {
        {"nothing stored yet", {"get", target_}, 3, "", "Description not found\n"},
        {"deleting, answered No", {"set", target_, ""}, 1, "", no},
        {"30000 characters", {"set", target_, n30000}, 0, "", ""},
        {"30001 characters", {"set", target_, "x" + n30000}, 64, "", tooLong},
        {"a NUL byte", {"set", target_, std::string("before\0after", 12)}, 64, "", nul},
        {"root folder", {"get", docs_.path()}, 2, "", root},
        {"missing target", {"set", gone, "new"}, 2, shown, notFound},
    };
    for (const auto& [name, args, exitCode, out, err] : rows) {
        SCOPED_TRACE(name);
        std::filesystem::remove(failsafeFile());
        EXPECT_EQ(run(args), exitCode);
        EXPECT_EQ(out_.str(), out);
        EXPECT_EQ(err_.str(), err);
        EXPECT_EQ(fileExists(failsafeFile()), exitCode == 0);
    }
    EXPECT_EQ(run({"frobnicate", target_}), 64);
    EXPECT_EQ(run({"get"}), 64);
}

// Arguments are exact names: a quote at either end is part of the name, never the
// shell's quoting of a whole command line.
TEST_F(CliTest, AQuoteAtEitherEndOfAnArgumentBelongsToTheName) {
    const std::string plain = docs_.write("end", "x");
    for (const char* name : {"end\"", "\"end", "\"end\""}) {
        SCOPED_TRACE(name);
        const std::string quoted = docs_.write(name, "x");
        ASSERT_EQ(run({"set", quoted, name}), 0) << err_.str();
        EXPECT_EQ(get(quoted), std::string(name) + "\n");
        EXPECT_EQ(get(plain), "(none)");
        ASSERT_EQ(run({"stores", quoted}), 0);
        EXPECT_NE(out_.str().find("(" + quoted + ".description)"), std::string::npos);
    }
}

// Other targets' lines pass through a save as the bytes they were, only a missing line
// end added; in the index, head lines of missing items are pruned unless last. Settings
// without their header are replaced by the defaults; with it they are read as they are.
TEST_F(CliTest, StoreFilesAndSettingsOfAnyBytesSurviveASave) {
    const std::string settings = home_.dataHome() + "/Kelvane/Veskor/config.dat";
    const std::string binary("a\0\xC3\x28\xFF", 5), foreign = binary + "\rtwo\n" + kTenMegabytes;
    const std::string noHeader("\0\xFF[Veskor 1.9]\0", 15),
        tenMbValue = "[Veskor 1.9]\rBgColor=" + kTenMegabytes + "\rCreate00index=0";
    for (const std::string& bytes : {noHeader, tenMbValue}) {
        const bool replaced = bytes == noHeader;
        SCOPED_TRACE(replaced ? "no header, NUL and non-UTF-8" : "10 MB value, lone CRs");
        writeFileBytes(settings, bytes);
        for (const std::string& file : {failsafeFile(), indexFile()})
            writeFileBytes(file, foreign);
        EXPECT_EQ(run({"stores", target_}), 0);
        ASSERT_EQ(run({"set", target_, "new"}), 0) << err_.str();
        EXPECT_EQ(readFileBytes(settings) != bytes, replaced);
        EXPECT_TRUE(readFileBytes(failsafeFile()) ==
                    record("new") + binary + "\r\ntwo\r\n" + kTenMegabytes + "\r\n");
        EXPECT_TRUE(readFileBytes(indexFile()) ==
                    (replaced ? "plan.txt     new\r\n" + kTenMegabytes + "\r\n" : foreign));
    }
}

// Starts the real veskor-cli through env(1), which sets the test hook that kills it
// after `stopAfterWrites` steps of a save (0: never).
pid_t startCli(Args args, int stopAfterWrites = 0) {
    args.insert(args.begin(),
                {"/usr/bin/env", "VESKOR_TEST_STOP_AFTER_WRITES=" + std::to_string(stopAfterWrites),
                 std::string(VESKOR_BINARY_DIR) + "/veskor-cli"});
    std::vector<char*> argv;
    for (auto& a : args)
        argv.push_back(a.data());
    argv.push_back(nullptr);
    pid_t pid = 0;
    EXPECT_EQ(posix_spawn(&pid, argv[0], nullptr, nullptr, argv.data(), environ), 0);
    return pid;
}

int waitFor(pid_t pid) {
    int status = 0;
    waitpid(pid, &status, 0);
    return status;
}

// Every record is three lines, so a lost or torn record shows in the count.
TEST_F(CliTest, ConcurrentSavesKeepEveryRecord) {
    std::string db;
    for (int i = 0; i < 50000; ++i)
        db += record("record", upperCase(docs_ / ("old" + std::to_string(i))));
    writeFileBytes(failsafeFile(), db);
    std::vector<pid_t> children;
    for (int i = 0; i < 12; ++i) {
        const std::string n = std::to_string(i);
        children.push_back(startCli({"set", docs_.write("new" + n, "x"), "text " + n}));
    }
    for (pid_t pid : children)
        EXPECT_EQ(waitFor(pid), 0);
    db = readFileBytes(failsafeFile());
    EXPECT_EQ(std::count(db.begin(), db.end(), '\n'), 3 * 50012);
}

// A save killed right after any step that changes a file on disk leaves the failsafe
// database and the index each in its old or its new version, byte for byte.
TEST_F(CliTest, ASaveKilledAtAnyStepLeavesEachFileOldOrNew) {
    docs_.write("kept.txt", "x");
    // Large enough that each file is written in several pieces.
    std::string others, kept = "kept.txt     body\r\n";
    for (int i = 0; i < 4000; ++i) {
        others += record("record", "/OTHER/FILE" + std::to_string(i));
        kept += "             continued " + std::to_string(i) + "\r\n";
    }
    const std::string oldDb = record("old text") + others, newDb = record("new text") + others;
    const std::string oldIndex = "plan.txt     old\r\n" + kept,
                      newIndex = "plan.txt     new text\r\n" + kept;
    int kills = 0;
    bool sawNewDbWithOldIndex = false;
    for (int step = 1; step < 100; ++step) {
        SCOPED_TRACE("killed after step " + std::to_string(step));
        writeFileBytes(failsafeFile(), oldDb);
        writeFileBytes(indexFile(), oldIndex);
        const int status = waitFor(startCli({"set", target_, "new text"}, step));
        const std::string dbNow = readFileBytes(failsafeFile()),
                          indexNow = readFileBytes(indexFile());
        if (WIFEXITED(status)) {  // the save had fewer steps and ran to its end
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

// The target vanishes after the save has checked it and before it reaches the file's
// metadata: the text still ends up in the file stores, the exported file standing in
// for the metadata.
TEST_F(CliTest, ATargetDeletedMidSaveKeepsTheTextInTheFileStores) {
    std::filesystem::create_directories(failsafeFolder());
    // Hold the database's lock, so that the save waits inside its first store.
    const int lock = ::open(failsafeFolder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(::flock(lock, LOCK_EX), 0);
    const pid_t pid = startCli({"set", target_, "kept text"});
    // The save is past its existence check once it has the folder open for the lock.
    const std::string fds = "/proc/" + std::to_string(pid) + "/fd";
    for (bool waiting = false; !waiting;) {
        std::error_code ec;
        for (const auto& fd : std::filesystem::directory_iterator(fds, ec))
            waiting = waiting || std::filesystem::read_symlink(fd.path(), ec) == failsafeFolder();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    std::filesystem::remove(target_);
    ::close(lock);
    EXPECT_EQ(waitFor(pid), 0);
    EXPECT_EQ(readFileBytes(target_ + ".description"), "kept text\r\n");
    EXPECT_EQ(readFileBytes(failsafeFile()), record("kept text"));
    EXPECT_EQ(readFileBytes(indexFile()), "plan.txt     kept text\r\n");
}

// A pseudo-terminal for the real program's streams: its name to redirect them to, and
// what they wrote (the terminal turns each LF into CR LF).
class Terminal {
public:
    Terminal() : m_master(::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK)) {
        char name[64] = {};
        if (m_master >= 0 && ::grantpt(m_master) == 0 && ::unlockpt(m_master) == 0 &&
            ::ptsname_r(m_master, name, sizeof name) == 0)
            m_name = name;
    }
    ~Terminal() { ::close(m_master); }
    const std::string& name() const { return m_name; }
    std::string written() const {
        std::string bytes;
        char buffer[4096];
        for (ssize_t n; (n = ::read(m_master, buffer, sizeof buffer)) > 0;)
            bytes.append(buffer, static_cast<std::size_t>(n));
        return bytes;
    }

private:
    int m_master;
    std::string m_name;
};

std::string cliCall(const std::string& arguments) {
    return std::string(VESKOR_BINARY_DIR) + "/veskor-cli " + arguments;
}

// The program asks its error stream, not its input or output, whether a terminal shows
// the progress line, and wipes the line before it ends.
TEST_F(CliTest, TheProgressLineGoesToAnErrorStreamOnATerminalOnly) {
    describe(target_, "needle");
    Terminal terminal;
    ASSERT_FALSE(terminal.name().empty());
    const std::string& pty = terminal.name();
    // name, the redirections of the call's standard streams
    const std::tuple<const char*, std::string, bool> rows[] = {
        {"error stream on a terminal", "</dev/null 2>" + pty, true},
        {"input and output on a terminal", "<" + pty + " 2>&1 >" + pty, false},
    };
    for (const auto& [rowName, redirections, shown] : rows) {
        SCOPED_TRACE(rowName);
        std::string written;
        const std::string call = cliCall("find needle " + docs_.path() + " " + redirections);
        EXPECT_EQ(runShell("(" + call + ")", &written), 0);
        written += terminal.written();
        EXPECT_NE(written.find(target_), std::string::npos) << written;
        EXPECT_EQ(written.find("veskor-cli: searched 1...") != std::string::npos, shown) << written;
        EXPECT_EQ(written.ends_with("\r"), shown) << "the line is wiped at the end: " << written;
    }
}

// A name that sets the window title and a description that clears the screen and writes
// the clipboard (ESC and BEL, and CSI as a C1 control). On a terminal each control is
// shown escaped, line breaks and tabs of a whole text kept; in a pipe the bytes are
// exact, so that scripts get the real names and `get | set` changes nothing.
TEST_F(CliTest, ATerminalShowsControlCharactersEscapedAPipeGetsThemExact) {
    const std::string name = "n\x1b]0;T\x07", csi = "\xC2\x9B";
    const std::string file = docs_.write(name, "x");
    const std::string rawFirst = "\x1b[2Jcleared" + csi + "1m";
    describe(file, rawFirst + "\n\x1b]52;c;eA==\x07\tend");
    const std::string shownName = "n\\x1b]0;T\\x07", shownFirst = "\\x1b[2Jcleared\\u009b1m";
    // name, call, on a terminal, in a pipe (each LF of which a terminal shows as CR LF)
    const std::tuple<const char*, std::string, std::string, std::string> rows[] = {
        {"ls", "ls " + docs_.path(), shownName + "\t" + shownFirst + "\r\n",
         name + "\t" + rawFirst + "\n"},
        {"find", "find cleared " + docs_.path(), docs_ / shownName + "\r\n", file + "\n"},
        {"get", "get '" + file + "'", shownFirst + "\r\n\\x1b]52;c;eA==\\x07\tend\r\n",
         rawFirst + "\n\x1b]52;c;eA==\x07\tend\n"},
        {"stores", "stores '" + file + "'",
         "== exported description file (" + docs_ / shownName + ".description)\r\n",
         "== exported description file (" + file + ".description)\n"},
    };
    Terminal terminal;
    ASSERT_FALSE(terminal.name().empty());
    for (const auto& [verb, call, onTerminal, inPipe] : rows) {
        SCOPED_TRACE(verb);
        EXPECT_EQ(runShell("(" + cliCall(call) + " 2>/dev/null >" + terminal.name() + ")"), 0);
        std::string written = terminal.written();
        EXPECT_NE(written.find(onTerminal), std::string::npos) << written;
        EXPECT_EQ(written.find_first_of(kRawControls), std::string::npos) << written;
        EXPECT_EQ(runShell("(" + cliCall(call) + " 2>/dev/null)", &written), 0);
        EXPECT_NE(written.find(inPipe), std::string::npos) << written;
    }
}

// Messages and JSON lines escape control characters wherever they go; JSON lines still
// carry the exact name and text, DEL and the C1 controls included.
TEST_F(CliTest, MessagesAndJsonLinesNeverCarryARawControlCharacter) {
    const std::string name = "n\x1b]0;T\x07\x7F", text = "\x1b[2J\xC2\x9B\x7F";
    describe(docs_.write(name, "x"), text);
    const std::string gone = docs_ / "gone\x1b[31m\nx";
    const std::string importLine =
        "{\"path\":\"" + docs_ / "gone\\u001b[31m\\nx\",\"description\":\"\"}";
    // name, call, standard input, what standard output and error hold
    const std::tuple<const char*, Args, std::string, std::string> rows[] = {
        {"import", {"import"}, importLine, "skipped (refused): " + docs_ / "gone\\x1b[31m\\nx\n"},
        {"a prompt",
         {"get", docs_ / "gone\x1b]0;T\x07"},
         "",
         "Veskor: Error: file not found.\n\"" + docs_ / "gone\\x1b]0;T\\x07\"\n"},
        {"a wrong call", {"get", "a", "b\x1b[2J"}, "", "b\\x1b[2J\n"},
        {"a message",
         {"ls", gone},
         "",
         "veskor-cli: " + docs_ / "gone\\x1b[31m\\nx: not a folder\n"},
        {"ls --json",
         {"ls", "--json", docs_.path()},
         "",
         "\"" +
             docs_ / "n\\u001b]0;T\\u0007\\u007f\",\"description\":\"\\u001b[2J\\u009b\\u007f\""},
    };
    for (const auto& [rowName, args, input, expected] : rows) {
        SCOPED_TRACE(rowName);
        run(args, input);
        const std::string written = out_.str() + err_.str();
        EXPECT_NE(written.find(expected), std::string::npos) << written;
        EXPECT_EQ(written.find_first_of(kRawControls), std::string::npos) << written;
    }
    ASSERT_EQ(run({"ls", "--json", docs_.path()}), 0);
    const auto line = parseJsonLine(out_.str().substr(0, out_.str().find('\n')));
    ASSERT_TRUE(line);
    EXPECT_EQ(line->path, docs_ / name);
    EXPECT_EQ(line->description, text);
}

}  // namespace
