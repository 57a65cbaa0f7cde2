#include "platform/files.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include "platform/atomic_file.h"
#include "platform/lookup.h"
#include "tests/temp_dir.h"

TEST(AtomicFileTest, ReplacesTheWholeFileAndLeavesNoTemporaryFile) {
    TempDir dir;
    const std::string path = dir.write("db.dat", "old content that is longer\r\n");
    AtomicFile out(path);
    ASSERT_FALSE(out.open());
    out.writeLine("new");
    out.write(std::string(200000, 'z'));
    ASSERT_FALSE(out.commit());
    EXPECT_EQ(readFileBytes(path), "new\r\n" + std::string(200000, 'z'));
    EXPECT_FALSE(fileExists(path + ".tmp"));
}

TEST(AtomicFileTest, LeavesTheOldFileWhenItCannotBeReplaced) {
    TempDir dir;
    const std::string readOnly = dir.write("config.dat", "old");
    ASSERT_EQ(::chmod(readOnly.c_str(), 0444), 0);
    EXPECT_EQ(replaceFileAtomically(readOnly, "new"), std::errc::permission_denied);
    EXPECT_EQ(readFileBytes(readOnly), "old");
    EXPECT_FALSE(fileExists(readOnly + ".tmp"));
    const std::string blocked = dir.write("a.dat", "old");
    dir.mkdir("a.dat.tmp");  // a folder where the temporary file must go
    EXPECT_TRUE(replaceFileAtomically(blocked, "new"));
    EXPECT_EQ(readFileBytes(blocked), "old");
    // A folder where the file itself must go: the rename fails and the folder stays.
    const std::string folder = dir.mkdir("b.dat");
    EXPECT_TRUE(replaceFileAtomically(folder, "new"));
    EXPECT_TRUE(IsADirectory(folder));
    EXPECT_FALSE(fileExists(folder + ".tmp"));
}

TEST(FilesTest, RenameNeverOverwritesAnExistingFile) {
    TempDir dir;
    const std::string from = dir.write("Index_00.txt", "older");
    const std::string to = dir.write("00_index.txt", "current");
    EXPECT_EQ(renameNoReplace(from, to), std::errc::file_exists);
    EXPECT_EQ(readFileBytes(to), "current");
    ASSERT_FALSE(removeFile(to));
    EXPECT_FALSE(renameNoReplace(from, to));
    EXPECT_EQ(readFileBytes(to), "older");
}

TEST(FilesTest, CreatesFoldersWithTheirParentsAndReadsWholeFiles) {
    TempDir dir;
    ASSERT_FALSE(createFolders(dir / "a/b/c/", 0700));
    EXPECT_TRUE(IsADirectory(dir / "a/b/c"));
    EXPECT_FALSE(createFolder(dir / "a/b/c/"));
    const std::string file = dir.write("a/file", "x");
    EXPECT_EQ(createFolder(file), std::errc::file_exists);
    std::string bytes = "stale";
    EXPECT_EQ(readWholeFile(dir / "missing", bytes), std::errc::no_such_file_or_directory);
    EXPECT_EQ(bytes, "");
    ASSERT_FALSE(readWholeFile(file, bytes));
    EXPECT_EQ(bytes, "x");
    EXPECT_FALSE(removeFile(dir / "missing"));
}
