#include "stores/ntfs_streams.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <tuple>
#include <utility>

#include "stores/summary_info_codec.h"
#include "tests/child_process.h"
#include "tests/loop_volume.h"
#include "tests/streams.h"
#include "tests/temp_dir.h"

namespace {

const std::string kSummary = "\x05SummaryInformation";
const std::string kMarker = "{4c8cc155-6c1e-11d1-8e41-00c04fb9386d}";
const std::string kOld = "description";

using Time = std::pair<std::int64_t, long>;
const Time kTenFifteenThirty{1678788930, 0};  // 2023-03-14 10:15:30 UTC
const Time kWithFraction{1678788930, 750'000'000};
const Time kWriteTime{978307200, 0};  // 2001-01-01 00:00:00 UTC

void setLastWrite(const std::string& path, Time time) {
    struct timespec times[2]{{0, UTIME_OMIT}, {static_cast<time_t>(time.first), time.second}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0) << path;
}

Time lastWriteOf(const std::string& path) {
    struct stat st {};
    EXPECT_EQ(::stat(path.c_str(), &st), 0) << path;
    return {st.st_mtim.tv_sec, st.st_mtim.tv_nsec};
}

// One target's streams kept in memory. The replace numbered `failAt` (1 = the first)
// fails; every replace that succeeds stamps the target with kWriteTime, as NTFS does
// to an entry whose stream changes.
class FakeStreams : public StreamAccess {
public:
    StreamStatus read(const std::string& path, std::string_view name, std::string& bytes) override {
        bytes = streams.contains(name) ? streams.find(name)->second : "";
        return exists(path, name);
    }
    StreamStatus exists(const std::string&, std::string_view name) override {
        return streams.contains(name) ? StreamStatus::Ok : StreamStatus::Missing;
    }
    StreamStatus replace(const std::string& path, std::string_view name,
                         std::string_view bytes) override {
        if (++replaces == failAt)
            return StreamStatus::Failed;
        streams[std::string(name)] = bytes;
        setLastWrite(path, kWriteTime);
        return StreamStatus::Ok;
    }

    std::map<std::string, std::string, std::less<>> streams{{kOld, "old"}};
    int failAt = 0, replaces = 0;
};

// A file in a folder that keeps user extended attributes.
class NtfsStreamsTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (replaceStream(dir_.write("probe", ""), "probe", "x") != StreamStatus::Ok)
            GTEST_SKIP() << "the temporary folder keeps no user extended attributes";
    }
    WriteResult save(const std::string& target, const std::string& text,
                     StreamAccess* streams = nullptr) {
        state_.target.targetFileFullPathname = target;
        editor_.setText(text);
        return streams ? updateNTFSDesc(state_, editor_, *streams)
                       : updateNTFSDesc(state_, editor_);
    }

    TempDir dir_;
    SharedState state_;
    PlainEditorState editor_;
    std::string file_ = dir_.write("plan.txt", "body");
};

// A summary stream that is not a property set is written back as it was.
TEST_F(NtfsStreamsTest, SaveWritesTheStreamsAndKeepsTheTimeToTheSecondAndTheMode) {
    const std::string old("old text\r\n\0", 11);
    ASSERT_EQ(replaceStream(file_, kOld, old), StreamStatus::Ok);
    EXPECT_EQ(readOldNTFSDesc(file_), old);
    setLastWrite(file_, kWithFraction);
    ASSERT_EQ(::chmod(file_.c_str(), 0444), 0);
    const std::string text = "\xCE\xA9 \xC3\xBC\x62\x65r\r\n\xE6\x97\xA5\xE6\x9C\xAC";

    ASSERT_EQ(save(file_, text), WriteResult::Ok);
    EXPECT_EQ(streamOf(file_, kSummary), createSummaryInfo(text));
    EXPECT_EQ(streamOf(file_, kMarker), "");
    EXPECT_EQ(streamOf(file_, kOld), "");
    EXPECT_EQ(readNTFSDesc(file_), text);
    EXPECT_EQ(lastWriteOf(file_), kTenFifteenThirty);
    std::error_code error;
    EXPECT_EQ(std::filesystem::status(file_, error).permissions(), std::filesystem::perms{0444});
    EXPECT_FALSE(editor_.exportChecked());

    ASSERT_EQ(replaceStream(file_, kSummary, "not a property set"), StreamStatus::Ok);
    ASSERT_EQ(save(file_, "abc"), WriteResult::Ok);
    EXPECT_EQ(streamOf(file_, kSummary), "not a property set");
}

// ext4 gives a file's attributes one block: a long description's summary does not fit,
// and the one saved before must not stay behind, in our stream or in Samba's copy.
TEST_F(NtfsStreamsTest, ASummaryThatDoesNotFitLeavesNoOldOne) {
    const std::string samba = "DosStream." + kSummary + ":$DATA";
    ASSERT_EQ(replaceStream(file_, "DOSATTRIB", "x"), StreamStatus::Ok);  // on a share
    ASSERT_EQ(save(file_, "short"), WriteResult::Ok);
    ASSERT_NE(streamOf(file_, samba), std::nullopt);
    if (save(file_, std::string(30000, 'x')) == WriteResult::Ok)
        GTEST_SKIP() << "the temporary folder takes a summary of 60 KB";
    EXPECT_EQ(readNTFSDesc(file_), "");
    EXPECT_EQ(streamOf(file_, kSummary), std::nullopt);
    EXPECT_EQ(streamOf(file_, samba), std::nullopt);
}

// Failures that only a fake can make; the real ones are below.
TEST_F(NtfsStreamsTest, EachOutcomeWithTheTimeAndTheOldStreamItLeaves) {
    // target, the replace that fails (0: none), export option, box ticked, time left
    const std::tuple<const char*, std::string, int, double, bool, Time> rows[] = {
        {"folder: time not restored", dir_.mkdir("Photos"), 0, 1, false, kWriteTime},
        {"export option not exactly 1", file_, 1, 2, false, kWithFraction},
        {"marker write fails", file_, 2, 1, true, kWriteTime},
    };
    for (const auto& [name, target, failAt, exportOption, exportTicked, time] : rows) {
        SCOPED_TRACE(name);
        setLastWrite(target, kWithFraction);
        FakeStreams streams;
        streams.failAt = failAt;
        state_.options.optionsCreateExpDescNonNTFS = exportOption;
        editor_.setExportChecked(false);

        EXPECT_EQ(save(target, "abc", &streams), failAt ? WriteResult::Error : WriteResult::Ok);
        EXPECT_EQ(editor_.exportChecked(), exportTicked);
        EXPECT_EQ(lastWriteOf(target), time);
        EXPECT_EQ(streams.streams[kOld], failAt ? "old" : "");
    }
}

// Root ignores permission bits, so root saves as another user.
TEST_F(NtfsStreamsTest, SomeoneElsesFileIsLeftAloneSilently) {
    ASSERT_EQ(::chmod(dir_.path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod(file_.c_str(), 0444), 0);
    const std::optional<uid_t> user = ::geteuid() == 0 ? std::optional(kOtherUser) : std::nullopt;
    EXPECT_TRUE(
        inChild([&] { return save(file_, "abc") == WriteResult::Ok && !editor_.exportChecked(); },
                30, user));
    EXPECT_EQ(streamOf(file_, kSummary), std::nullopt);
}

// file_ lies on a FUSE volume of its own.
class VolumeTest : public NtfsStreamsTest {
protected:
    void mountVolume(const std::string& mkfs, const std::string& mount) {
        if (std::string reason = volume_.mount(mkfs, mount); !reason.empty())
            GTEST_SKIP() << reason;
        file_ = volume_.mountPoint() + "/plan.txt";
        ASSERT_EQ(::close(::open(file_.c_str(), O_CREAT | O_WRONLY, 0644)), 0);
    }
    void unmount() { EXPECT_TRUE(volume_.unmount()); }

    LoopVolume volume_{dir_};
};

struct NtfsVolumeTest : VolumeTest {
    void SetUp() override { mountVolume("mkntfs -F -Q", "ntfs-3g -o streams_interface=xattr"); }
};

TEST_F(NtfsVolumeTest, WritesTheRealAlternateDataStreams) {
    const std::string text = "Budget\r\n\xCE\xA9 and \xE2\x82\xAC";
    ASSERT_EQ(save(file_, text), WriteResult::Ok);
    unmount();
    std::string bytes;
    EXPECT_EQ(runShell("ntfscat -f " + volume_.image() + " /plan.txt -a DATA -n '" + kSummary + "'",
                       &bytes),
              0);
    EXPECT_EQ(bytes, createSummaryInfo(text));
}

struct ExfatVolumeTest : VolumeTest {
    void SetUp() override { mountVolume("mkfs.exfat", "mount.exfat-fuse"); }
};

TEST_F(ExfatVolumeTest, VolumeWithoutStreamsFailsAndTicksTheExportBox) {
    EXPECT_EQ(save(file_, "abc"), WriteResult::Error);
    EXPECT_TRUE(editor_.exportChecked());
}

}  // namespace
