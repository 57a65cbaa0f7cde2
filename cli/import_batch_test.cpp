// An import stores its lines in batches: every store ends up byte for byte as saving
// the lines one by one leaves it, and a run killed at any step leaves each store old
// or new.
#include <sys/stat.h>
#include <sys/xattr.h>

#include <filesystem>
#include <map>

#include "platform/code_page.h"
#include "tests/cli_fixture.h"
#include "tests/loop_volume.h"

namespace {

namespace fs = std::filesystem;

using Stores = std::map<std::string, std::string>;

const std::string kLong = "a long name with blanks.txt";
const std::string kCafe = "caf\xC3\xA9.txt";

class ImportBatchTest : public CliFixture {
protected:
    // The tree before the import: an index with entries of kept, gone and targeted
    // items, empty lines and a last line naming a gone item; a UTF-8 descript.ion in
    // Sub; an exported file; a database with other records and old ones of targets.
    void buildTree() {
        for (const auto& entry : fs::directory_iterator(docs_.path()))
            fs::remove_all(entry.path());
        for (const std::string name :
             {"a.txt", "b.txt", "kept.txt", "Sub/c.txt", "Sub/d.txt", "Sub/e f.txt"})
            docs_.write(name, "x");
        for (const std::string& name : {kLong, kCafe})
            docs_.write(name, "x");
        // An item others may not read, in a folder they may enter: kept out of the index.
        ::chmod(docs_.path().c_str(), 0755);
        ::chmod(docs_.write("private.txt", "x").c_str(), 0600);
        docs_.write("b.txt.description", "old B\r\n");
        docs_.write("00_index.txt",
                    "             orphan line\r\na.txt        old A\r\nstale.txt    gone\r\n"
                    "             its second line\r\n\r\nkept.txt     kept\r\n"
                    "             and its second\r\nB.TXT        old b in capitals\r\n"
                    "private.txt  old private\r\n"
                    "lastgone.txt\r\n");
        docs_.write("Sub/descript.ion",
                    "\xEF\xBB\xBF"
                    "c.txt old C\r\nother.txt caf\xC3\xA9\r\n\"e f.txt\" old E\r\n");
        std::string db;
        for (const std::string& key : {upperCase(docs_ / "a.txt"), std::string("/ELSEWHERE/ONE"),
                                       upperCase(docs_ / "Sub/d.txt"), std::string("/ELSEWHERE/2")})
            db += "Veskor failsafe DB 1.7 BEGIN " + key + "\r\nold text\r\nof " + key +
                  "\r\nVeskor failsafe DB 1.7 END " + key + "\r\n";
        writeFileBytes(failsafeFile(), db);
    }

    // Every file under docs with its bytes and mode, every user attribute of every
    // entry, and the database; leftover temporary files aside.
    Stores stores() const {
        Stores all{{"database", readFileBytes(failsafeFile())}};
        for (const auto& entry : fs::recursive_directory_iterator(docs_.path())) {
            const std::string path = entry.path().string();
            if (path.ends_with(".tmp"))
                continue;
            struct stat info {};
            ::stat(path.c_str(), &info);
            if (entry.is_regular_file())
                all[path] = std::to_string(info.st_mode) + ":" + readFileBytes(path);
            for (const std::string& name : attributeNames(path))
                all[path + " " + name] = attribute(path, name);
        }
        return all;
    }

    // The import file and the `set --yes` calls that store its lines one by one.
    struct Lines {
        std::string file;
        std::vector<std::pair<std::string, std::string>> saves;
    };
    Lines lines() const {
        const std::pair<std::string, std::string> rows[] = {
            {"a.txt", "A new\nsecond line"},
            {"Sub/c.txt", "C"},
            {"gone.txt", "lost"},
            {"b.txt", ""},  // a deletion, of the exported file too
            {kLong, "L"},
            {"Sub", "the folder"},
            {"a.txt", "A again"},
            {"Sub/d.txt", ""},
            {kCafe, "\xC3\x89t\xC3\xA9\n"},
            {"Sub/c.txt", ""},
            {"Sub/c.txt", "C last"},
            {"Sub/e f.txt", "E"},
            {"kept.txt", std::string(30001, 'k')},
            {"private.txt", "P"},
        };
        Lines out;
        for (const auto& [name, text] : rows) {
            std::string json;
            for (char c : text)
                json += c == '\n' ? std::string("\\n") : std::string(1, c);
            out.file += "{\"path\":\"" + docs_ / name + "\",\"description\":\"" + json + "\"}\n";
            out.saves.emplace_back(docs_ / name, text);
        }
        out.file.insert(out.file.find('\n') + 1, "not json\n");
        return out;
    }

private:
    static std::vector<std::string> attributeNames(const std::string& path) {
        std::string names(65536, '\0');
        const ssize_t size = ::listxattr(path.c_str(), names.data(), names.size());
        std::vector<std::string> out;
        for (std::size_t at = 0; size > 0 && at < static_cast<std::size_t>(size);) {
            out.emplace_back(names.c_str() + at);
            at += out.back().size() + 1;
        }
        return out;
    }
    static std::string attribute(const std::string& path, const std::string& name) {
        std::string value(65536, '\0');
        const ssize_t size = ::getxattr(path.c_str(), name.c_str(), value.data(), value.size());
        value.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
        return value;
    }
};

TEST_F(ImportBatchTest, EveryStoreEndsAsSavingTheLinesOneByOneLeavesIt) {
    const Lines input = lines();
    buildTree();
    for (const auto& [path, text] : input.saves)
        (void)run({"set", "--yes", path, text});
    const Stores oneByOne = stores();

    buildTree();
    const Stores before = stores();
    const std::string file = docs_.write("lines.jsonl", input.file);
    EXPECT_EQ(run({"import", file}), 1);
    EXPECT_EQ(out_.str(), "skipped (not a description line): line 2\nskipped (missing): " +
                              docs_ / "gone.txt\nskipped (refused): " +
                              docs_ / "kept.txt\nstored 12, skipped 3\n");
    fs::remove(file);
    const Stores batched = stores();
    ASSERT_NE(batched, before);
    for (const auto& [key, value] : oneByOne) {
        SCOPED_TRACE(key);
        EXPECT_EQ(batched.contains(key) ? batched.at(key) : "(none)", value);
    }
    for (const auto& [key, value] : batched)
        EXPECT_TRUE(oneByOne.contains(key)) << key << " is only there after the import";
}

// Killed right after any step that changes a file on disk, the import leaves every file
// and attribute in its old or its new version.
TEST_F(ImportBatchTest, AnImportKilledAtAnyStepLeavesEveryStoreOldOrNew) {
    const std::string file = program_.write("lines.jsonl", lines().file);
    const std::string call = std::string(VESKOR_BINARY_DIR) + "/veskor-cli import " + file;
    buildTree();
    (void)run({"stores", docs_ / "a.txt"});  // the data folder and settings exist first
    const Stores before = stores();
    EXPECT_EQ(runShell(call), 1);
    const Stores after = stores();
    int kills = 0;
    for (int step = 1; step < 200; ++step) {
        SCOPED_TRACE("killed after step " + std::to_string(step));
        buildTree();
        const int code =
            runShell("VESKOR_TEST_STOP_AFTER_WRITES=" + std::to_string(step) + " " + call);
        const Stores now = stores();
        for (const auto& [key, value] : now) {
            const bool old = before.contains(key) && before.at(key) == value;
            EXPECT_TRUE(old || (after.contains(key) && after.at(key) == value)) << key;
        }
        if (code == 1) {
            EXPECT_EQ(now, after) << "ran to its end";
            break;
        }
        ++kills;
    }
    EXPECT_GE(kills, 12);
}

}  // namespace
