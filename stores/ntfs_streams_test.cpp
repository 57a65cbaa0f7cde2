#include "stores/ntfs_streams.h"

#include <fcntl.h>
#include <grp.h>
#include <linux/magic.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "stores/summary_info_codec.h"
#include "tests/temp_dir.h"

namespace {

const std::string kSummary = "\x05SummaryInformation";
const std::string kMarker = "{4c8cc155-6c1e-11d1-8e41-00c04fb9386d}";
const std::string kOld = "description";

constexpr std::int64_t kTenFifteenThirty = 1678788930;  // 2023-03-14 10:15:30 UTC
constexpr std::int64_t kWriteTime = 978307200;          // 2001-01-01 00:00:00 UTC
constexpr long kFuseMagic = 0x65735546;

using Time = std::pair<std::int64_t, long>;

void setLastWrite(const std::string& path, Time time) {
    struct timespec times[2]{};
    times[0].tv_nsec = UTIME_OMIT;
    times[1].tv_sec = static_cast<time_t>(time.first);
    times[1].tv_nsec = time.second;
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0) << path;
}

Time lastWriteOf(const std::string& path) {
    struct stat st {};
    EXPECT_EQ(::stat(path.c_str(), &st), 0) << path;
    return {st.st_mtim.tv_sec, st.st_mtim.tv_nsec};
}

// The stream's bytes, or nullopt when it does not exist.
std::optional<std::string> streamOf(const std::string& path, const std::string& name) {
    std::string bytes;
    if (readStream(path, name, bytes) != StreamStatus::Ok)
        return std::nullopt;
    return bytes;
}

// Starts a program with stdin and stderr on /dev/null and stdout on `outFd` (or
// /dev/null too).
pid_t spawn(const std::vector<std::string>& argv, int outFd = -1) {
    std::vector<char*> args;
    for (const std::string& arg : argv)
        args.push_back(const_cast<char*>(arg.c_str()));
    args.push_back(nullptr);
    pid_t pid = ::fork();
    if (pid == 0) {
        int null = ::open("/dev/null", O_RDWR);
        ::dup2(null, 0);
        ::dup2(outFd >= 0 ? outFd : null, 1);
        ::dup2(null, 2);
        ::execvp(args[0], args.data());
        ::_exit(127);
    }
    return pid;
}

int waitFor(pid_t pid) {
    int status = 0;
    if (pid < 0 || ::waitpid(pid, &status, 0) != pid)
        return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// Runs a program to its end; its exit code, -1 when it did not exit normally.
int run(const std::vector<std::string>& argv, std::string* output = nullptr) {
    if (!output)
        return waitFor(spawn(argv));
    int fds[2];
    if (::pipe2(fds, O_CLOEXEC) != 0)
        return -1;
    pid_t pid = spawn(argv, fds[1]);
    ::close(fds[1]);
    char buffer[4096];
    for (ssize_t got; (got = ::read(fds[0], buffer, sizeof buffer)) > 0;)
        output->append(buffer, static_cast<std::size_t>(got));
    ::close(fds[0]);
    return waitFor(pid);
}

long fileSystemOf(const std::string& path) {
    struct statfs fs {};
    return ::statfs(path.c_str(), &fs) == 0 ? static_cast<long>(fs.f_type) : 0;
}

bool waitForFuseMount(const std::string& mountPoint) {
    for (int i = 0; i < 1000; ++i) {
        if (fileSystemOf(mountPoint) == kFuseMagic)
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
}

// Streams kept in memory. The replace numbered `failAt` (1 = the first) answers
// `failure`; every replace that succeeds stamps the target with kWriteTime, as NTFS
// does to an entry whose stream changes.
class FakeStreams : public StreamAccess {
public:
    StreamStatus read(const std::string& path, std::string_view name, std::string& bytes) override {
        auto found = streams.find({path, std::string(name)});
        bytes = found == streams.end() ? "" : found->second;
        return found == streams.end() ? StreamStatus::Missing : StreamStatus::Ok;
    }
    StreamStatus exists(const std::string& path, std::string_view name) override {
        return streams.count({path, std::string(name)}) ? StreamStatus::Ok : StreamStatus::Missing;
    }
    StreamStatus replace(const std::string& path, std::string_view name,
                         std::string_view bytes) override {
        if (++replaces == failAt)
            return failure;
        streams[{path, std::string(name)}] = bytes;
        setLastWrite(path, {kWriteTime, 0});
        return StreamStatus::Ok;
    }

    std::map<std::pair<std::string, std::string>, std::string> streams;
    int failAt = 0;
    StreamStatus failure = StreamStatus::Failed;
    int replaces = 0;
};

class NtfsStreamsTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (replaceStream(dir_.write("probe", ""), "probe", "x") != StreamStatus::Ok)
            GTEST_SKIP() << "the temporary folder keeps no user extended attributes";
    }

    WriteResult save(const std::string& target, const std::string& text) {
        state_.target.targetFileFullPathname = target;
        editor_.setText(text);
        return updateNTFSDesc(state_, editor_);
    }

    WriteResult saveThrough(StreamAccess& streams, const std::string& target) {
        state_.target.targetFileFullPathname = target;
        editor_.setText("abc");
        return updateNTFSDesc(state_, editor_, streams);
    }

    TempDir dir_;
    SharedState state_;
    PlainEditorState editor_;
};

TEST_F(NtfsStreamsTest, SaveGivesFreshSummaryAnEmptyMarkerAndTheTimeToTheSecond) {
    std::string file = dir_.write("plan.txt", "body");
    setLastWrite(file, {kTenFifteenThirty, 750'000'000});

    ASSERT_EQ(save(file, "abc"), WriteResult::Ok);

    EXPECT_EQ(streamOf(file, kSummary), createSummaryInfo("abc"));
    EXPECT_EQ(streamOf(file, kMarker), "");
    EXPECT_EQ(streamOf(file, kOld), std::nullopt);
    EXPECT_EQ(lastWriteOf(file), Time(kTenFifteenThirty, 0));
    EXPECT_EQ(readNTFSDesc(file), "abc");
    EXPECT_FALSE(editor_.exportChecked());
}

TEST_F(NtfsStreamsTest, OldStreamReadsExactlyAndEachSaveEmptiesIt) {
    std::string file = dir_.write("plan.txt", "body");
    const std::string old("old text\r\n\0", 11);
    ASSERT_EQ(replaceStream(file, kOld, old), StreamStatus::Ok);
    EXPECT_EQ(readOldNTFSDesc(file), old);

    ASSERT_EQ(save(file, "new"), WriteResult::Ok);
    EXPECT_EQ(streamOf(file, kOld), "");
    EXPECT_EQ(readOldNTFSDesc(file), "");
}

TEST_F(NtfsStreamsTest, SavesTheEditorTextWhateverItsCharacters) {
    std::string folder = dir_.mkdir("Photos");
    const std::string text = "\xCE\xA9 \xC3\xBC\x62\x65r\r\n\xE6\x97\xA5\xE6\x9C\xAC";
    state_.targetFileDesc = "the copy for the other stores";

    ASSERT_EQ(save(folder, text), WriteResult::Ok);
    EXPECT_EQ(readNTFSDesc(folder), text);

    ASSERT_EQ(save(folder, ""), WriteResult::Ok);
    EXPECT_EQ(readNTFSDesc(folder), "");
    EXPECT_EQ(streamOf(folder, kSummary).value_or("").size(), 96u) << "Comments removed";
}

TEST_F(NtfsStreamsTest, UnrecognisedSummaryIsWrittenBackUnchanged) {
    std::string file = dir_.write("plan.txt", "body");
    ASSERT_EQ(replaceStream(file, kSummary, "not a property set"), StreamStatus::Ok);

    ASSERT_EQ(save(file, "abc"), WriteResult::Ok);
    EXPECT_EQ(streamOf(file, kSummary), "not a property set");
    EXPECT_EQ(readNTFSDesc(file), "");
    EXPECT_EQ(readNTFSDesc(dir_ / "gone.txt"), "");
    EXPECT_EQ(readOldNTFSDesc(dir_ / "gone.txt"), "");
}

TEST_F(NtfsStreamsTest, OnlyRegularFilesGetTheirTimeBack) {
    std::string fifo = dir_ / "pipe";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0644), 0);
    struct Row {
        const char* name;
        std::string target;
        Time expected;
    } rows[] = {
        {"file", dir_.write("plan.txt", "body"), {kTenFifteenThirty, 0}},
        {"folder", dir_.mkdir("Photos"), {kWriteTime, 0}},
        {"FIFO", fifo, {kWriteTime, 0}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        setLastWrite(row.target, {kTenFifteenThirty, 750'000'000});
        FakeStreams streams;
        ASSERT_EQ(saveThrough(streams, row.target), WriteResult::Ok);
        EXPECT_EQ(lastWriteOf(row.target), row.expected);
    }
}

TEST_F(NtfsStreamsTest, FailedWritesReportErrorButPermissionIsSilent) {
    struct Row {
        const char* name;
        int failAt;
        StreamStatus failure;
        double exportOption;
        WriteResult expected;
        bool exportTicked;
    } rows[] = {
        {"no streams on the volume", 1, StreamStatus::NotSupported, 1, WriteResult::Error, true},
        {"export option off", 1, StreamStatus::NotSupported, 0, WriteResult::Error, false},
        {"export option not exactly 1", 1, StreamStatus::Failed, 2, WriteResult::Error, false},
        {"marker write fails", 2, StreamStatus::Failed, 1, WriteResult::Error, true},
        {"permission denied", 1, StreamStatus::PermissionDenied, 1, WriteResult::Ok, false},
        {"permission denied on the marker", 2, StreamStatus::PermissionDenied, 1, WriteResult::Ok,
         false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::string file = dir_.write("plan.txt", "body");
        setLastWrite(file, {kTenFifteenThirty, 750'000'000});
        FakeStreams streams;
        streams.streams[{file, kOld}] = "old";
        streams.failAt = row.failAt;
        streams.failure = row.failure;
        state_.options.optionsCreateExpDescNonNTFS = row.exportOption;
        editor_.setExportChecked(false);

        EXPECT_EQ(saveThrough(streams, file), row.expected);
        EXPECT_EQ(editor_.exportChecked(), row.exportTicked);
        EXPECT_EQ((streams.streams[{file, kOld}]), "old");
        EXPECT_NE(lastWriteOf(file), Time(kTenFifteenThirty, 0)) << "time restored";
    }
}

TEST_F(NtfsStreamsTest, TooLongForOneExt4AttributeLeavesTheOldStream) {
    if (fileSystemOf(dir_.path()) != EXT4_SUPER_MAGIC)
        GTEST_SKIP() << "the temporary folder is not on ext4";
    const std::string text(30000, 'x');
    if (replaceStream(dir_ / "probe", "probe", text) == StreamStatus::Ok)
        GTEST_SKIP() << "this ext4 volume keeps large attributes (ea_inode)";
    std::string file = dir_.write("plan.txt", "body");
    const std::string before = createSummaryInfo("kept");
    ASSERT_EQ(replaceStream(file, kSummary, before), StreamStatus::Ok);

    EXPECT_EQ(save(file, text), WriteResult::Error);
    EXPECT_TRUE(editor_.exportChecked());
    EXPECT_EQ(streamOf(file, kSummary), before);
    EXPECT_EQ(readNTFSDesc(file), "kept");
}

// Root ignores permission bits, so another user makes the refusal real.
TEST_F(NtfsStreamsTest, SomeoneElsesFileIsLeftAloneSilently) {
    std::string file = dir_.write("plan.txt", "body");
    ASSERT_EQ(::chmod(dir_.path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod(file.c_str(), 0644), 0);
    state_.target.targetFileFullPathname = file;
    editor_.setText("abc");
    if (::geteuid() != 0) {
        ASSERT_EQ(::chmod(file.c_str(), 0444), 0);
        EXPECT_EQ(updateNTFSDesc(state_, editor_), WriteResult::Ok);
        EXPECT_FALSE(editor_.exportChecked());
    } else {
        pid_t pid = ::fork();
        if (pid == 0) {
            bool dropped =
                ::setgroups(0, nullptr) == 0 && ::setgid(65534) == 0 && ::setuid(65534) == 0;
            bool silent = dropped && updateNTFSDesc(state_, editor_) == WriteResult::Ok &&
                          !editor_.exportChecked();
            ::_exit(silent ? 0 : 1);
        }
        EXPECT_EQ(waitFor(pid), 0);
    }
    EXPECT_EQ(streamOf(file, kSummary), std::nullopt);
}

// A FUSE volume in an image file below a temporary folder, unmounted by TearDown
// whatever the test did.
class VolumeTest : public ::testing::Test {
protected:
    void TearDown() override {
        if (mounted_ && run({"fusermount", "-u", mountPoint_}) != 0)
            (void)run({"fusermount", "-u", "-z", mountPoint_});
        if (!mounted_ && daemon_ > 0)
            ::kill(daemon_, SIGTERM);
        if (daemon_ > 0)
            (void)waitFor(daemon_);
        if (!loopDevice_.empty())
            (void)run({"losetup", "-d", loopDevice_});
    }

    WriteResult save(const std::string& target, const std::string& text) {
        state_.target.targetFileFullPathname = target;
        editor_.setText(text);
        return updateNTFSDesc(state_, editor_);
    }

    TempDir dir_;
    std::string image_ = dir_ / "volume.img";
    std::string mountPoint_ = dir_.mkdir("mnt");
    bool mounted_ = false;
    pid_t daemon_ = -1;
    std::string loopDevice_;
    SharedState state_;
    PlainEditorState editor_;
};

class NtfsVolumeTest : public VolumeTest {
protected:
    void SetUp() override {
        if (run({"truncate", "-s", "8M", image_}) != 0 || run({"mkntfs", "-F", "-Q", image_}) != 0)
            GTEST_SKIP() << "cannot make an NTFS image (mkntfs from ntfs-3g missing?)";
        // In the foreground, so that TearDown can wait until the image is written.
        daemon_ =
            spawn({"ntfs-3g", "-o", "streams_interface=xattr,no_detach", image_, mountPoint_});
        mounted_ = waitForFuseMount(mountPoint_);
        if (!mounted_)
            GTEST_SKIP() << "cannot mount an NTFS image with ntfs-3g (no FUSE here?)";
    }

    // The stream as the unmounted image holds it.
    std::optional<std::string> imageStream(const std::string& file, const std::string& name) {
        std::string bytes;
        if (run({"ntfscat", "-f", image_, file, "-a", "DATA", "-n", name}, &bytes) != 0)
            return std::nullopt;
        return bytes;
    }

    void unmount() {
        ASSERT_EQ(run({"fusermount", "-u", mountPoint_}), 0);
        mounted_ = false;
        ASSERT_EQ(waitFor(std::exchange(daemon_, -1)), 0);
    }
};

TEST_F(NtfsVolumeTest, WritesTheRealAlternateDataStreams) {
    std::string file = mountPoint_ + "/plan.txt";
    ASSERT_EQ(::close(::open(file.c_str(), O_CREAT | O_WRONLY, 0644)), 0);
    setLastWrite(file, {kTenFifteenThirty, 750'000'000});
    const std::string text = "Budget\r\n\xCE\xA9 and \xE2\x82\xAC";

    ASSERT_EQ(save(file, text), WriteResult::Ok);
    EXPECT_EQ(lastWriteOf(file), Time(kTenFifteenThirty, 0));
    unmount();

    EXPECT_EQ(imageStream("/plan.txt", kSummary), createSummaryInfo(text));
    EXPECT_EQ(imageStream("/plan.txt", kMarker), "");
}

class ExfatVolumeTest : public VolumeTest {
protected:
    void SetUp() override {
        if (run({"truncate", "-s", "8M", image_}) != 0 || run({"mkfs.exfat", image_}) != 0)
            GTEST_SKIP() << "cannot make an exFAT image (mkfs.exfat from exfatprogs missing?)";
        if (run({"losetup", "-f", "--show", image_}, &loopDevice_) != 0 || loopDevice_.empty())
            GTEST_SKIP() << "no loop device for the exFAT image";
        loopDevice_.erase(loopDevice_.find_last_not_of('\n') + 1);
        mounted_ = run({"mount.exfat-fuse", loopDevice_, mountPoint_}) == 0 &&
                   waitForFuseMount(mountPoint_);
        if (!mounted_)
            GTEST_SKIP() << "cannot mount an exFAT volume with exfat-fuse";
    }
};

TEST_F(ExfatVolumeTest, VolumeWithoutStreamsFailsAndTicksTheExportBox) {
    std::string file = mountPoint_ + "/plan.txt";
    ASSERT_EQ(::close(::open(file.c_str(), O_CREAT | O_WRONLY, 0644)), 0);

    EXPECT_EQ(save(file, "abc"), WriteResult::Error);
    EXPECT_TRUE(editor_.exportChecked());
    EXPECT_EQ(readNTFSDesc(file), "");
}

}  // namespace
