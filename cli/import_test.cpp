// export and import: an export, a wipe of every store and an import give back the same
// descriptions; an import goes on past the lines it cannot store.
#include <sys/xattr.h>

#include <filesystem>

#include "stores/ntfs_streams.h"
#include "tests/cli_fixture.h"

namespace {

namespace fs = std::filesystem;

class ImportTest : public CliFixture {
protected:
    // Every store of every entry under docs emptied: attributes, exported files,
    // indexes and the failsafe database.
    void wipeEveryStore() {
        for (const auto& entry : fs::recursive_directory_iterator(docs_.path())) {
            const std::string path = entry.path().string();
            if (path.ends_with(".description") || path.ends_with("/00_index.txt")) {
                fs::remove(path);
                continue;
            }
            for (const char* name : {"user.\005SummaryInformation", "user.description",
                                     "user.{4c8cc155-6c1e-11d1-8e41-00c04fb9386d}"})
                ::removexattr(path.c_str(), name);
        }
        fs::remove(failsafeFile());
    }
    // What `ls -a` would show of every entry, recursively: path and `get`'s output.
    std::string everyDescription() {
        std::string all;
        for (const auto& entry : fs::recursive_directory_iterator(docs_.path())) {
            const std::string path = entry.path().string();
            if (!path.ends_with(".description") && !path.ends_with("/00_index.txt"))
                all += path + ": " + get(path);
        }
        return all;
    }
};

// Among the names: one in Latin-1 beside its UTF-8 twin, which reads the same once
// decoded, and names that end in a quote.
TEST_F(ImportTest, AnExportAWipeAndAnImportGiveBackTheSameDescriptions) {
    for (const char* name : {"a.txt", "b\xC3\xA9 b.txt", "caf\xE9", "caf\xC3\xA9", "plain.txt", "q",
                             "q\"", "Sub/c.txt", "Sub/d.txt"})
        docs_.write(name, "x");
    describe(docs_ / "caf\xE9", "Latin-1");
    describe(docs_ / "caf\xC3\xA9", "UTF-8");
    describe(docs_ / "q\"", "Not q's");
    describe(docs_ / "a.txt", "First\n\nthird line, after an empty one");
    ASSERT_EQ(run({"set", "--export", docs_ / "b\xC3\xA9 b.txt", "caf\xC3\xA9 \"quoted\"\t"}), 0);
    describe(docs_ / "Sub", "The folder");
    describe(docs_ / "Sub/c.txt", "Ends in a break\n");
    writeFileBytes(docs_ / "Sub/d.txt.description", "Only exported\r\n");
    const std::string before = everyDescription();

    ASSERT_EQ(run({"export", docs_.path()}), 0) << err_.str();
    const std::string exported = out_.str();
    std::string hex;
    for (unsigned char c : docs_ / "caf\xE9") {
        hex += "0123456789abcdef"[c >> 4];
        hex += "0123456789abcdef"[c & 15];
    }
    EXPECT_NE(exported.find("{\"path\":\"" + docs_ / "caf\xC3\xA9\",\"path_hex\":\"" + hex +
                            "\",\"description\":\"Latin-1\""),
              std::string::npos)
        << exported;
    EXPECT_EQ(exported.find("path_hex"), exported.rfind("path_hex")) << "UTF-8 names need none";
    wipeEveryStore();
    ASSERT_NE(everyDescription(), before);
    EXPECT_EQ(run({"import"}, exported), 0) << out_.str() << err_.str();
    EXPECT_EQ(out_.str(), "stored 8, skipped 0\n");
    EXPECT_EQ(everyDescription(), before);
    EXPECT_EQ(readNTFSDesc(docs_ / "Sub/c.txt"), "Ends in a break\r\n") << "the text itself";
    EXPECT_EQ(readNTFSDesc(docs_ / "q\"") + "|" + readNTFSDesc(docs_ / "q"), "Not q's|")
        << "a quote ends the name, not the path";
}

// A line that cannot be stored (a missing entry, a line that is not a description)
// is reported, and the lines after it are still stored.
TEST_F(ImportTest, AnImportStoresEveryLineItCanAndNamesTheOthers) {
    docs_.write("a.txt", "x");
    docs_.write("z.txt", "x");
    auto line = [&](const std::string& name, const std::string& text) {
        return "{\"path\":\"" + docs_ / name + "\",\"description\":\"" + text + "\"}\n";
    };
    const std::string badHex =
        "{\"path\":\"" + docs_ / "a.txt\",\"path_hex\":\"2g\",\"description\":\"bad\"}\n";
    const std::string lines = line("a.txt", "A") + line("gone.txt", "lost") + "not json\n\n" +
                              badHex + line("z.txt", "Z");
    const std::string file = docs_.write("descriptions.jsonl", lines);
    EXPECT_EQ(run({"import", file}), 1);
    EXPECT_EQ(out_.str(), "skipped (missing): " + docs_ / "gone.txt\n" +
                              "skipped (not a description line): line 3\n"
                              "skipped (not a description line): line 5\n"
                              "stored 2, skipped 3\n");
    EXPECT_EQ(get(docs_ / "a.txt"), "A\n");
    EXPECT_EQ(get(docs_ / "z.txt"), "Z\n");
    EXPECT_EQ(run({"import", docs_ / "none.jsonl"}), 2);
}

}  // namespace
