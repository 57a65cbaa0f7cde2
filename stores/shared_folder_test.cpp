// What a save does in a folder that other users may write or read: veskor-cli run
// in-process on "plan.txt" in a temporary home.
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <tuple>
#include <utility>

#include "platform/xattr.h"
#include "stores/ntfs_streams.h"
#include "tests/cli_fixture.h"

namespace {

class SharedFolderTest : public CliFixture {
protected:
    mode_t modeOf(const std::string& path) const {
        struct stat st {};
        return ::lstat(path.c_str(), &st) == 0 ? st.st_mode & 07777 : 0;
    }
    std::string dataFolder() const { return home_.dataHome() + "/Kelvane/Veskor"; }

    std::string target_ = docs_.write("plan.txt", "content");
};

// A link planted at a store's name, to a file the saving user may read, is not followed:
// its entries are not read, nothing of the file is copied, the link stays and the store
// reports its failure.
TEST_F(SharedFolderTest, LinksPlantedAsStoreFilesAreNeitherReadNorReplaced) {
    TempDir privateDir;
    const std::string secret =
        privateDir.write("notes.txt", "plan.txt     SECRET\r\nplan.txt SECRET\r\nSECRET\r\n");
    ASSERT_EQ(::chmod(secret.c_str(), 0600), 0);
    // store file, the store's message
    const std::tuple<const char*, const char*> rows[] = {
        {"00_index.txt", "Error: Problem while updating '00_index.txt' file."},
        {"descript.ion", "Error: Problem while updating 'descript.ion' file."},
        {"plan.txt.description", "Error: Problem while updating exported description file."},
    };
    for (const auto& [name, message] : rows) {
        SCOPED_TRACE(name);
        const std::string link = docs_ / name;
        std::filesystem::remove(link);  // written by the save of the row before
        ASSERT_EQ(::symlink(secret.c_str(), link.c_str()), 0);
        EXPECT_EQ(get(target_).find("SECRET"), std::string::npos);
        EXPECT_NE(run({"set", "--export", target_, "new"}), 0);
        EXPECT_NE(err_.str().find(message), std::string::npos) << err_.str();
        EXPECT_EQ(std::filesystem::read_symlink(link), secret);
        for (const auto& entry : std::filesystem::directory_iterator(docs_.path())) {
            if (!entry.is_symlink()) {
                EXPECT_EQ(readFileBytes(entry.path()).find("SECRET"), std::string::npos)
                    << entry.path();
            }
        }
        ASSERT_EQ(::unlink(link.c_str()), 0);
    }
    EXPECT_EQ(readFileBytes(secret), "plan.txt     SECRET\r\nplan.txt SECRET\r\nSECRET\r\n");
    EXPECT_EQ(modeOf(secret), 0600u);
}

// The user's data folders and files are the user's alone, also where an older version
// left them open; the exported file and the folder index tell others no more than the
// item itself does.
TEST_F(SharedFolderTest, PrivateDataStaysPrivate) {
    ASSERT_EQ(::chmod(docs_.path().c_str(), 0755), 0);
    ASSERT_EQ(std::filesystem::create_directories(dataFolder() + "/failsafe db"), true);
    for (const std::string& folder : {dataFolder(), dataFolder() + "/failsafe db"})
        ASSERT_EQ(::chmod(folder.c_str(), 0755), 0);
    writeFileBytes(failsafeFile(), "");
    ASSERT_EQ(::chmod(failsafeFile().c_str(), 0644), 0);
    const mode_t oldUmask = ::umask(022);
    ASSERT_EQ(::chmod(target_.c_str(), 0600), 0);
    const std::string open = docs_.write("open.txt", "x");
    describe(open, "Open");
    ASSERT_EQ(run({"set", "--export", target_, "Private"}), 0) << err_.str();
    ::umask(oldUmask);

    for (const std::string& folder :
         {home_.dataHome() + "/Kelvane", dataFolder(), dataFolder() + "/failsafe db"})
        EXPECT_EQ(modeOf(folder), 0700u) << folder;
    EXPECT_EQ(modeOf(failsafeFile()), 0600u);
    EXPECT_EQ(modeOf(dataFolder() + "/config.dat"), 0600u);
    EXPECT_EQ(modeOf(target_ + ".description"), 0600u);
    EXPECT_EQ(readFileBytes(docs_ / "00_index.txt"), "open.txt     Open\r\n");
    EXPECT_EQ(get(target_), "Private\n");

    // Once others may read the item, its entry is written as any other.
    ASSERT_EQ(::chmod(target_.c_str(), 0644), 0);
    describe(target_, "Public");
    EXPECT_EQ(readFileBytes(docs_ / "00_index.txt"),
              "plan.txt     Public\r\nopen.txt     Open\r\n");
}

// An access ACL that also lets user 65534 read, as the kernel keeps it: a version, then
// tag, permissions and id of each entry, little-endian.
std::string aclGrantingOtherUser() {
    std::string acl("\x02\0\0\0", 4);
    auto entry = [&acl](char tag, char perm, std::uint32_t id) {
        acl += std::string{tag, '\0', perm, '\0'};
        for (int shift = 0; shift < 32; shift += 8)
            acl += static_cast<char>((id >> shift) & 0xFF);
    };
    const std::uint32_t none = 0xFFFFFFFF;
    entry('\x01', 6, none);   // owner
    entry('\x02', 4, 65534);  // user 65534
    entry('\x04', 4, none);   // owning group
    entry('\x10', 4, none);   // mask
    entry('\x20', 4, none);   // others
    return acl;
}

std::string aclOf(const std::string& path) {
    char value[256];
    const ssize_t size = ::getxattr(path.c_str(), "system.posix_acl_access", value, sizeof value);
    return size < 0 ? "" : std::string(value, static_cast<std::size_t>(size));
}

// A description given to a store file itself, and an ACL on it, stay with the file when
// a save of another item replaces it.
TEST_F(SharedFolderTest, ReplacedStoreFilesKeepTheirOwnDescriptionAndAcl) {
    if (replaceStream(docs_.write("probe", ""), "probe", "x") != StreamStatus::Ok)
        GTEST_SKIP() << "the temporary folder keeps no user extended attributes";
    const std::string index = docs_ / "00_index.txt";
    describe(target_, "Plan");
    describe(index, "The folder's index");
    const std::string acl = aclGrantingOtherUser();
    const bool withAcl =
        ::setxattr(index.c_str(), "system.posix_acl_access", acl.data(), acl.size(), 0) == 0;
    describe(docs_.write("other.txt", "x"), "Other");
    EXPECT_EQ(readNTFSDesc(index), "The folder's index");
    EXPECT_EQ(aclOf(index), withAcl ? acl : "");
}

// Two real users of one folder: one plants a file at a name the other's save uses, the
// other saves through veskor-cli. In a sticky folder (as /tmp is) the planted name can
// be neither removed nor written; in an open one a link there leads to the saver's notes.
TEST(TwoUsersTest, WhatOneUserPlantsNeitherBlocksNorReadsAnothersSave) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "needs root to act as two users";
    const uid_t saver = 65533, planter = 65534;
    TempDir dir;
    ASSERT_EQ(::chmod(dir.path().c_str(), 0755), 0);
    const std::string home = dir.mkdir("home"), notes = dir.write("home/notes.txt", "SECRET\r\n");
    for (const auto& [path, mode] : {std::pair{home, 0700}, std::pair{notes, 0600}}) {
        ASSERT_EQ(::chown(path.c_str(), saver, saver), 0);
        ASSERT_EQ(::chmod(path.c_str(), static_cast<mode_t>(mode)), 0);
    }
    // folder mode, the name planted, a link to the notes or a file, the save's exit code
    const std::tuple<const char*, mode_t, const char*, bool, int> rows[] = {
        {"sticky folder, temporary name taken", 01777, "00_index.txt.tmp", false, 0},
        {"open folder, link as descript.ion", 0777, "descript.ion", true, 1},
    };
    for (const auto& [name, mode, planted, link, exitCode] : rows) {
        SCOPED_TRACE(name);
        const std::string shared = dir.mkdir(name), target = shared + "/plan.txt";
        ASSERT_EQ(::chmod(shared.c_str(), mode), 0);
        const std::string plantedPath = shared + "/" + planted;
        if (link)
            ASSERT_EQ(::symlink(notes.c_str(), plantedPath.c_str()), 0);
        else
            writeFileBytes(plantedPath, "planted");
        ASSERT_EQ(::lchown(plantedPath.c_str(), planter, planter), 0);
        writeFileBytes(target, "x");
        ASSERT_EQ(::chown(target.c_str(), saver, saver), 0);
        const std::string save =
            "setpriv --reuid=65533 --regid=65533 --clear-groups env HOME=" + home +
            " XDG_DATA_HOME= " + VESKOR_BINARY_DIR + "/veskor-cli set '" + target +
            "' new 2>/dev/null";
        const int status = std::system(save.c_str());
        EXPECT_EQ(WIFEXITED(status) ? WEXITSTATUS(status) : -1, exitCode);
        EXPECT_EQ(readFileBytes(shared + "/00_index.txt"), "plan.txt     new\r\n");
        EXPECT_EQ(readFileBytes(notes), "SECRET\r\n");
        EXPECT_EQ(std::filesystem::is_symlink(plantedPath), link);
        EXPECT_EQ(readFileBytes(plantedPath), link ? "SECRET\r\n" : "planted");
    }
}

}  // namespace
