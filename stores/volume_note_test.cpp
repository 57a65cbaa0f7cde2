#include "stores/volume_note.h"

#include <linux/magic.h>
#include <sys/vfs.h>

#include <gtest/gtest.h>

#include <tuple>

#include "platform/mount_table.h"
#include "platform/xattr.h"
#include "stores/summary_info_codec.h"
#include "tests/loop_volume.h"

namespace {

const std::string kShort = "Budget 2026";
const std::string kLong(5000, 'L');

// A file on a FUSE volume of its own, judged with the running system's mount table.
TEST(VolumeNoteTest, TellsEachVolumeByWhatItRefuses) {
    const std::tuple<const char*, const char*, const char*, std::string> rows[] = {
        {"exFAT", "mkfs.exfat", "mount.exfat-fuse",
         "This volume keeps no extended attributes, so the file itself cannot hold a "
         "description."},
        {"NTFS with windows_names", "mkntfs -F -Q",
         "ntfs-3g -o streams_interface=xattr,windows_names",
         "ntfs-3g mounted this volume with windows_names, which refuses stream names with "
         "control characters; the summary stream's name begins with byte 05."},
        {"NTFS holds even a long description", "mkntfs -F -Q", "ntfs-3g -o streams_interface=xattr",
         ""},
    };
    for (const auto& [name, mkfs, mount, note] : rows) {
        SCOPED_TRACE(name);
        TempDir dir;
        LoopVolume volume(dir);
        if (std::string reason = volume.mount(mkfs, mount); !reason.empty())
            GTEST_SKIP() << reason;
        const std::string file = volume.mountPoint() + "/plan.txt";
        writeFileBytes(file, "");
        EXPECT_EQ(windowsCommentObstacle(file, kLong, readMountTable()), note);
        // Asking left nothing behind.
        std::string names;
        EXPECT_TRUE(listStreams(file, names) != StreamStatus::Ok || names.empty());
    }
}

// The driver is told by the mount table alone.
TEST(VolumeNoteTableTest, Ntfs3DriverAndAnyOtherVolume) {
    const std::string table =
        "22 1 8:1 / / rw - ext4 /dev/sda1 rw\n"
        "41 22 0:46 / /media/ann/Windows rw - ntfs3 /dev/sdc1 rw,iocharset=utf8\n";
    EXPECT_EQ(windowsCommentObstacle("/media/ann/Windows/plan.txt", kShort, table),
              "The ntfs3 driver mounted this NTFS volume: it keeps the streams as NTFS extended "
              "attributes, which Windows does not show as the file's comment.");
    EXPECT_EQ(windowsCommentObstacle("/media/ann/Windows.txt", kShort, table), "");
}

// The note appears exactly where a fresh file on this ext4 volume refuses the stream.
TEST(VolumeNoteTableTest, Ext4BlockTooSmallForALongDescription) {
    TempDir dir;
    const std::string file = dir.write("plan.txt", "x");
    struct statfs fs {};
    if (::statfs(file.c_str(), &fs) != 0 || fs.f_type != EXT4_SUPER_MAGIC || fs.f_bsize != 4096 ||
        replaceStream(file, "probe", kLong) == StreamStatus::Ok)
        GTEST_SKIP() << "the temporary folder is not on ext4 with 4 KiB blocks";
    const std::string table = readMountTable();
    EXPECT_EQ(windowsCommentObstacle(file, kLong, table),
              "ext4 keeps all of a file's extended attributes in one block of 4096 bytes; the "
              "summary stream of this description needs " +
                  std::to_string(createSummaryInfo(kLong).size()) + " bytes.");
    for (std::size_t length = 3900; length < 4100; length += 3) {
        const std::string text(length, 'L');
        const std::string fresh = dir.write("fresh" + std::to_string(length), "");
        const bool fits = replaceStream(fresh, "\x05SummaryInformation", createSummaryInfo(text)) ==
                          StreamStatus::Ok;
        EXPECT_EQ(windowsCommentObstacle(fresh, text, table).empty(), fits) << length;
    }
}

}  // namespace
