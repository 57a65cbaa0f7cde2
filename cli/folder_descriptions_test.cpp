// A file manager asks about one item at a time and must see what `ls` shows, also after
// a store shared by the folder's items changed.
#include "cli/folder_descriptions.h"

#include <unistd.h>

#include <thread>

#include "platform/files.h"
#include "platform/xattr.h"
#include "tests/cli_fixture.h"
#include "tests/store_samples.h"

namespace {

class FolderDescriptionsTest : public CliFixture {
protected:
    DataPaths dataPaths() {
        std::istringstream in;
        Session session(program_.path(), {in, out_, err_});
        EXPECT_TRUE(session.start());
        return session.state.data;
    }
};

TEST_F(FolderDescriptionsTest, EachItemReadsAsGetLoadsIt) {
    const std::vector<std::string> names = describeOnePerStore(
        docs_, failsafeFile(),
        [&](const std::string& path, const std::string& text) { describe(path, text); });
    FolderDescriptions reader(dataPaths());
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        const std::string path = docs_ / name;
        ItemDescription item = reader.describe(path);
        const std::string printed = get(path);
        EXPECT_EQ(item.text.empty() ? "(none)" : item.text + "\n", printed);
        EXPECT_EQ(item.status + "\n", item.text.empty() ? "\n" : err_.str());
    }
    EXPECT_EQ(reader.describe(docs_ / "exported.txt.description").text, "")
        << "an exported file is a store, not an item";
}

// Each shared store changes after the folder was first read; the next question sees it.
TEST_F(FolderDescriptionsTest, ChangedSharedStoresAreReadAgain) {
    const std::string indexed = docs_.write("indexed.txt", "x");
    const std::string ion = docs_.write("ion.txt", "x");
    const std::string exported = docs_.write("exported.txt", "x");
    const std::string failsafe = docs_.write("failsafe.txt", "x");
    docs_.write("00_index.txt", "other.txt    Other\r\n");
    FolderDescriptions reader(dataPaths());
    for (const std::string& path : {indexed, ion, exported, failsafe})
        ASSERT_EQ(reader.describe(path).text, "");

    const struct {
        const char* store;
        std::function<void()> change;
        std::string path, text;
    } rows[] = {
        {"index rewritten in place",
         [&] { docs_.write("00_index.txt", "indexed.txt  Now indexed\r\n"); }, indexed,
         "Now indexed"},
        {"descript.ion added", [&] { docs_.write("DESCRIPT.ION", "ion.txt New entry\r\n"); }, ion,
         "New entry"},
        {"exported file added", [&] { docs_.write("exported.txt.description", "Exported\r\n"); },
         exported, "Exported"},
        {"failsafe record added",
         [&] { appendFailsafeRecord(failsafeFile(), failsafe, "Saved late"); }, failsafe,
         "Saved late"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.store);
        row.change();
        EXPECT_EQ(reader.describe(row.path).text, row.text);
    }
}

TEST_F(FolderDescriptionsTest, WhatCannotBeReadHasNoDescription) {
    const std::string gone = docs_.write("gone.txt", "x");
    describe(gone, "Soon gone");
    FolderDescriptions reader(dataPaths());
    ASSERT_EQ(reader.describe(gone).text, "Soon gone");
    ASSERT_EQ(::unlink(gone.c_str()), 0);
    EXPECT_EQ(reader.describe(gone).text, "");
    EXPECT_EQ(reader.describe(docs_ / "no folder/file.txt").text, "");
    EXPECT_EQ(reader.describe("/").text, "");
}

// Many folders in turn: the reader keeps a bounded number and still answers for all.
TEST_F(FolderDescriptionsTest, ManyFoldersInTurn) {
    FolderDescriptions reader(dataPaths());
    const std::size_t count = FolderDescriptions::kFoldersKept + 4;
    // Built by appending: GCC 12 at -O3 warns falsely about "literal" + std::to_string().
    auto numbered = [](std::string text, std::size_t i, std::string_view tail) {
        return text.append(std::to_string(i)).append(tail);
    };
    for (std::size_t i = 0; i < count; ++i) {
        docs_.write(numbered("f", i, "/a.txt"), "x");
        docs_.write(numbered("f", i, "/00_index.txt"), numbered("a.txt        Folder ", i, "\r\n"));
    }
    for (int pass = 0; pass < 2; ++pass) {
        for (std::size_t i = 0; i < count; ++i)
            EXPECT_EQ(reader.describe(docs_ / numbered("f", i, "/a.txt")).text,
                      numbered("Folder ", i, ""));
    }
}

// The listing, not a lookup per item, tells what each item is and which of several
// descript.ion files is read: a link shows its target's description, and a change to
// that descript.ion is seen.
TEST_F(FolderDescriptionsTest, TheListingTellsLinksAndTheDescriptIonRead) {
    const std::string sub = docs_ / "Sub";
    docs_.write("Sub/inner.txt", "x");
    describe(sub, "The sub folder");
    ASSERT_EQ(::symlink(sub.c_str(), (docs_ / "link").c_str()), 0);
    FolderDescriptions reader(dataPaths());
    EXPECT_EQ(reader.describe(docs_ / "link").text + "\n", get(docs_ / "link"));

    const struct {
        const char* folder;
        std::vector<std::string> names;  // the last is the one read
    } rows[] = {
        {"lower case first", {"DESCRIPT.ION", "Descript.ion", "descript.ion"}},
        {"then the least name", {"Descript.ion", "DESCRIPT.ION"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.folder);
        const std::string folder = std::string(row.folder) + "/";
        const std::string item = docs_.write(folder + "a.txt", "x");
        for (const std::string& name : row.names)
            docs_.write(folder + name, "a.txt From " + name + "\r\n");
        ASSERT_EQ(reader.describe(item).text, "From " + row.names.back());
        // Rewritten in place: the folder itself does not change.
        docs_.write(folder + row.names.back(), "a.txt Changed\r\n");
        EXPECT_EQ(reader.describe(item).text, "Changed");
    }
}

// A folder is read ahead of its items while its watch starts: a change after that is
// still seen, and items asked together are answered in the order asked, whatever order
// they are read in.
TEST_F(FolderDescriptionsTest, APreparedFolderIsCheckedAgainForItsItems) {
    std::vector<std::string> paths;
    for (const char* name : {"a.txt", "b.txt", "c.txt"})
        paths.push_back(docs_.write(name, "x"));
    FolderDescriptions reader(dataPaths());
    reader.prepare(docs_.path());
    docs_.write("00_index.txt",
                "a.txt        First\r\nb.txt        Second\r\nc.txt        Third\r\n");
    const std::vector<ItemDescription> items = reader.describe({paths[2], paths[0], paths[1]});
    ASSERT_EQ(items.size(), 3u);
    EXPECT_EQ(items[0].text, "Third");
    EXPECT_EQ(items[1].text, "First");
    EXPECT_EQ(items[2].text, "Second");
}

// A thread with a current folder of its own reads items by their names in their
// folder; items of several folders in turn are each read in their own.
TEST_F(FolderDescriptionsTest, ItemsOfSeveralFoldersReadByTheirNames) {
    std::vector<std::string> paths;
    for (const char* folder : {"zero", "one"}) {
        paths.push_back(docs_.write(std::string(folder) + "/a.txt", "x"));
        describe(paths.back(), folder);
        ::unlink((docs_ / (std::string(folder) + "/00_index.txt")).c_str());
    }
    paths.insert(paths.end(), {paths[0], paths[1]});
    const DataPaths data = dataPaths();
    std::vector<ItemDescription> items;
    std::thread([&] {
        ASSERT_TRUE(ownCurrentFolder());
        FolderDescriptions reader(data, true);
        items = reader.describe(paths);
    }).join();
    ASSERT_EQ(items.size(), 4u);
    for (std::size_t i = 0; i < items.size(); ++i)
        EXPECT_EQ(items[i].text, i % 2 ? "one" : "zero") << i;
}

}  // namespace
