// What a save does in a folder that other users may write or read: veskor-cli run
// in-process on "plan.txt" in a temporary home.
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <tuple>

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

}  // namespace
