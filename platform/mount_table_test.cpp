#include "platform/mount_table.h"

#include <gtest/gtest.h>

#include <tuple>

TEST(MountTableTest, FindsTheVolumeThatHoldsAPath) {
    const std::string table =
        "22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
        "40 22 0:45 / /mnt/my\\040disk rw - vfat /dev/sdb1 rw,fmask=0022\n"
        "41 22 0:46 / /mnt/win rw shared:7 master:2 - ntfs3 /dev/sdc1 rw,iocharset=utf8\n"
        "42 41 0:47 / /mnt/win rw - fuseblk /dev/sdc1 rw,user_id=0\n"
        "43 22 0:48 / /mnt/broken rw\n";
    const std::tuple<const char*, std::string, std::string, std::string> rows[] = {
        {"the root holds what nothing else does", "/home/ann/a.txt", "/", "ext4"},
        {"a blank in the mount point", "/mnt/my disk/a.txt", "/mnt/my disk", "vfat"},
        {"a name that merely starts like a mount point", "/mnt/windows/a", "/", "ext4"},
        {"the later of two mounts covers the earlier", "/mnt/win/a.txt", "/mnt/win", "fuseblk"},
        {"the mount point itself", "/mnt/win", "/mnt/win", "fuseblk"},
        {"a line without its file system is skipped", "/mnt/broken/a", "/", "ext4"},
    };
    for (const auto& [name, path, mountPoint, type] : rows) {
        SCOPED_TRACE(name);
        std::optional<Mount> mount = mountHolding(table, path);
        ASSERT_TRUE(mount);
        EXPECT_EQ(mount->mountPoint + " " + mount->fileSystemType, mountPoint + " " + type);
    }
    EXPECT_EQ(mountHolding("", "/a"), std::nullopt);
    EXPECT_EQ(mountHolding(table, "/mnt/my disk")->source, "/dev/sdb1");
}
