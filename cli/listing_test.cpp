// ls, find and export read in batch what `get` reads one entry at a time.
#include "cli/listing.h"

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <set>
#include <sstream>

#include "cli/json_lines.h"
#include "platform/xattr.h"
#include "tests/cli_fixture.h"
#include "tests/loop_volume.h"
#include "tests/store_samples.h"

namespace {

class ListingTest : public CliFixture {
protected:
    // The paths that a listing of the whole folder hands on with `readers` threads, one a
    // line; with `describedOnly`, only those with a description.
    std::string listedTree(std::size_t readers, bool describedOnly) {
        std::istringstream in;
        Session session(program_.path(), {in, out_, err_});
        EXPECT_TRUE(session.start());
        std::string paths;
        const auto take = [&](const ListedEntry& entry) {
            if (!describedOnly || !entry.text.empty())
                paths.append(entry.path).append("\n");
        };
        EXPECT_TRUE(Listing(session, docs_.path()).listTree(docs_.path(), take, readers));
        return paths;
    }
};

// setpriv drops from the bounding set the rights by which root reads a folder whatever
// its mode; dropped there, they are gone from the program it runs.
std::string withoutReadingRights() {
    return ::geteuid() == 0 ? "setpriv --bounding-set -dac_override,-dac_read_search " : "";
}

// The paths below `root` (ending in "/") depth first, each folder's entries in byte
// order before the trees of its folders, one a line; only those `keep` takes.
std::string depthFirst(const std::string& root, const std::function<bool(const std::string&)>& keep,
                       const std::string& folder = "") {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(root + folder))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    std::string paths;
    for (const std::string& name : names) {
        if (keep(folder + name))
            paths.append(root).append(folder).append(name).append("\n");
    }
    for (const std::string& name : names) {
        if (std::filesystem::is_directory(root + folder + name))
            paths += depthFirst(root, keep, folder + name + "/");
    }
    return paths;
}

// One entry described in each store, in a folder with an undescribed file, a described
// folder holding a described file, and a link to that folder.
TEST_F(ListingTest, LsFindAndExportShowWhatGetPrints) {
    for (const char* name : {"B.txt", "exported.txt", "old.txt", "summary.txt", "indexed.txt",
                             "failsafe.txt", "Sub/deep.txt"})
        docs_.write(name, "x");
    describe(docs_ / "Sub", "The sub folder");
    describe(docs_ / "Sub/deep.txt", "Deep, with a NEEDLE");
    describe(docs_ / "summary.txt", "In the summary\r\n");
    docs_.write("exported.txt.description", "From the exported\r\nfile\r\n");
    ASSERT_EQ(replaceStream(docs_ / "old.txt", "description", "Old\r\nstream"), StreamStatus::Ok);
    writeFileBytes(docs_ / "00_index.txt", readFileBytes(docs_ / "00_index.txt") +
                                               "indexed.txt  Indexed\r\n             "
                                               "second\r\n");
    appendFailsafeRecord(failsafeFile(), docs_ / "failsafe.txt", "needle in the failsafe");
    ASSERT_EQ(::symlink((docs_ / "Sub").c_str(), (docs_ / "link").c_str()), 0);
    // Other programs' stores, last in order: written after every save above.
    ASSERT_EQ(replaceStream(docs_.write("comment.txt", "x"), "xdg.comment", "From the\nKDE"),
              StreamStatus::Ok);
    docs_.write("ion.txt", "x");
    docs_.write("descript.ion", "ion.txt From a\\ncommander\x04\xC2\r\n");
    ASSERT_EQ(run({"ls", docs_.path()}), 0) << err_.str();
    EXPECT_EQ(out_.str(),
              "Sub\tThe sub folder\n"
              "comment.txt\tFrom the\n"
              "exported.txt\tFrom the exported\n"
              "failsafe.txt\tneedle in the failsafe\n"
              "indexed.txt\tIndexed\n"
              "ion.txt\tFrom a\n"
              "link\tThe sub folder\n"
              "old.txt\tOld\n"
              "summary.txt\tIn the summary\n");

    ASSERT_EQ(run({"ls", "-a", "--json", docs_.path()}), 0) << err_.str();
    std::istringstream lines(out_.str());
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        auto entry = parseJsonLine(line);
        ASSERT_TRUE(entry) << line;
        SCOPED_TRACE(entry->path);
        const bool described = !entry->description.empty();
        EXPECT_EQ(get(entry->path), described ? entry->description + "\n" : "(none)");
        EXPECT_EQ("Loaded from " + entry->source + "\n", described ? err_.str() : "Loaded from \n");
    }
    EXPECT_EQ(count, 12) << "every entry but the exported file";

    // The link to the folder is not followed, so its file is found once.
    const std::tuple<const char*, std::string, int, std::string> finds[] = {
        {"letter case ignored", "needle", 0, docs_ / "failsafe.txt\n" + docs_ / "Sub/deep.txt\n"},
        {"line breaks are LF", "old\nstream", 0, docs_ / "old.txt\n"},
        {"no match", "haystack", 3, ""},
    };
    for (const auto& [name, text, exitCode, found] : finds) {
        SCOPED_TRACE(name);
        EXPECT_EQ(run({"find", text, docs_.path()}), exitCode);
        EXPECT_EQ(out_.str(), found);
    }
    ASSERT_EQ(run({"export", docs_.path()}), 0);
    const std::string exported = out_.str();
    EXPECT_EQ(std::count(exported.begin(), exported.end(), '\n'), 10) << exported;
}

// Folders are read ahead in several threads; what comes out is still each folder's
// entries in byte order (bytes above 0x7F after every ASCII byte, wherever they stand
// in the name), then the trees of its folders one after another.
TEST_F(ListingTest, FindWalksTheTreeDepthFirstInByteOrder) {
    for (const char* folder : {"a/b/c/d", "a/B2", "b/x", "Z/y/z", "Z/y2", "e"})
        std::filesystem::create_directories(docs_ / folder);
    const std::set<std::string> described = {
        "a/1\xC3\xA9.txt", "a/b/2.txt",  "a/b/c/d/3.txt", "a/B2/4.txt", "b/x/5.txt", "Z/6.txt",
        "Z/y/z/7.txt",     "Z/y2/8.txt", "9.txt",         "a/b",        "Z/y"};
    for (const std::string& path : described) {
        if (path.ends_with(".txt"))
            docs_.write(path, "x");
        describe(docs_ / path, "needle");
    }

    const std::string expected =
        depthFirst(docs_.path(), [&](const std::string& path) { return described.contains(path); });
    ASSERT_EQ(run({"find", "needle", docs_.path()}), 0) << err_.str();
    EXPECT_EQ(out_.str(), expected);
    EXPECT_EQ(std::count(expected.begin(), expected.end(), '\n'), 11);

    // Where no thread can be started, the calling thread reads each folder in turn.
    EXPECT_EQ(listedTree(0, true), expected);
}

// Wide folders go from the reading threads to the output in parts: with any number of
// readers every entry comes out once, in the same order, while the folders read ahead
// wait for the output to take their parts.
TEST_F(ListingTest, WideFoldersComeOutWholeAndInOrderWithAnyNumberOfReaders) {
    for (const char* folder : {"w1/inner", "w2", "w3"}) {
        std::filesystem::create_directories(docs_ / folder);
        for (int i = 0; i < 1300; ++i)
            docs_.write(std::string(folder) + "/f" + std::to_string(i), "");
    }
    const std::string expected = depthFirst(docs_.path(), [](const std::string&) { return true; });
    EXPECT_EQ(std::count(expected.begin(), expected.end(), '\n'), 3 * 1300 + 4);
    for (std::size_t readers : {0, 1, 4}) {
        SCOPED_TRACE(readers);
        const std::string output = listedTree(readers, false);
        EXPECT_TRUE(output == expected) << output.size() << " bytes against " << expected.size();
    }
}

// A folder that cannot be read fails the call (exit 1), and the folders after it are
// still read, in their order.
TEST_F(ListingTest, AFolderThatCannotBeReadFailsTheWalkButNotTheFoldersAfterIt) {
    for (const char* name : {"a/1.txt", "z/2.txt"})
        describe(docs_.write(name, "x"), "needle");
    if (runShell(withoutReadingRights() + "true") != 0)
        GTEST_SKIP() << "root cannot give up its right to read every folder";
    const std::string locked = docs_.mkdir("m");
    ASSERT_EQ(::chmod(locked.c_str(), 0), 0);
    for (const char* call : {"find needle ", "export "}) {
        SCOPED_TRACE(call);
        std::string found;
        EXPECT_EQ(runShell(withoutReadingRights() + VESKOR_BINARY_DIR + "/veskor-cli " + call +
                               docs_.path(),
                           &found),
                  1);
        const auto first = found.find(docs_ / "a/1.txt"), last = found.find(docs_ / "z/2.txt");
        EXPECT_TRUE(first < last && last != std::string::npos) << found;
    }
    ASSERT_EQ(::chmod(locked.c_str(), 0700), 0);
}

}  // namespace
