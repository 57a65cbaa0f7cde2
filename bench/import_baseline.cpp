// The import's baseline: stores ENTRIES descriptions in each of FOLDERS folders the way
// a careful hand-written program would, and no more: each entry's three attributes
// (the summary stream, TEMPLATE's with the entry's text after it, so that as with a
// real stream no two entries share an attribute block; the empty marker; the comment),
// in the order Veskor writes them;
// each folder's index once; and the database once (the new records first, then the
// old ones but the entries' own), every file replaced as rewrite_baseline does it.
//   import_baseline DB TREE FOLDERS ENTRIES TEMPLATE
#include <sys/xattr.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "bench_lines.h"

namespace {

struct Entry {
    std::string folder, name, key, description;
};

std::string upper(std::string text) {
    for (char& c : text)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

std::vector<Entry> entriesOf(const std::string& tree, int folders, int entries) {
    std::vector<Entry> all;
    char name[32];
    for (int f = 0; f < folders; ++f) {
        const std::string folder = tree + "/d" + std::to_string(f) + "/";
        for (int i = 0; i < entries; ++i) {
            std::snprintf(name, sizeof name, "f%05d.txt", i);
            const std::uint64_t number = all.size();
            all.push_back(
                {folder, name, upper(folder + name), importDescription(folder + name, number)});
        }
    }
    return all;
}

bool writeAttributes(const Entry& entry, const std::string& templateSummary) {
    const std::string path = entry.folder + entry.name;
    const std::string comment = entry.description + "\nand its second line";
    const std::string summary = templateSummary + comment;
    return ::setxattr(path.c_str(), "user.\005SummaryInformation", summary.data(), summary.size(),
                      0) == 0 &&
           ::setxattr(path.c_str(), "user.{4c8cc155-6c1e-11d1-8e41-00c04fb9386d}", "", 0, 0) == 0 &&
           ::setxattr(path.c_str(), "user.xdg.comment", comment.data(), comment.size(), 0) == 0;
}

// The folder's index, its entries written from scratch (the folders have none before).
bool writeIndex(const std::vector<Entry>& entries, std::size_t first, std::size_t last) {
    Replacement out(entries[first].folder + "00_index.txt");
    if (!out.ok())
        return false;
    for (std::size_t i = first; i < last; ++i) {
        std::string head = entries[i].name;
        head.resize(13, ' ');
        out.line(head + entries[i].description);
        out.line("             and its second line");
    }
    return out.commit();
}

bool rewriteDb(const std::string& db, const std::vector<Entry>& entries) {
    Replacement out(db);
    Lines in(db);
    if (!out.ok() || !in.ok())
        return false;
    std::unordered_set<std::string> keys;
    for (const Entry& entry : entries) {
        out.line("Veskor failsafe DB 1.7 BEGIN " + entry.key);
        out.line(entry.description);
        out.line("and its second line");
        out.line("Veskor failsafe DB 1.7 END " + entry.key);
        keys.insert(entry.key);
    }
    constexpr std::string_view begin = "Veskor failsafe DB 1.7 BEGIN ";
    std::string_view line;
    std::string end;
    while (in.next(line)) {
        if (!end.empty()) {
            if (line == end)
                end.clear();
        } else if (line.starts_with(begin) &&
                   keys.contains(std::string(line.substr(begin.size())))) {
            end = "Veskor failsafe DB 1.7 END " + std::string(line.substr(begin.size()));
        } else {
            out.line(line);
        }
    }
    return out.commit();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 6) {
        std::fprintf(stderr, "usage: import_baseline DB TREE FOLDERS ENTRIES TEMPLATE\n");
        return 64;
    }
    const int folders = std::atoi(argv[3]), perFolder = std::atoi(argv[4]);
    std::string summary(65536, '\0');
    const ssize_t size =
        ::getxattr(argv[5], "user.\005SummaryInformation", summary.data(), summary.size());
    if (size < 0)
        return 1;
    summary.resize(static_cast<std::size_t>(size));
    const std::vector<Entry> entries = entriesOf(argv[2], folders, perFolder);
    for (const Entry& entry : entries) {
        if (!writeAttributes(entry, summary))
            return 1;
    }
    for (std::size_t first = 0; first < entries.size();
         first += static_cast<std::size_t>(perFolder)) {
        if (!writeIndex(entries, first, first + static_cast<std::size_t>(perFolder)))
            return 1;
    }
    return rewriteDb(argv[1], entries) ? 0 : 1;
}
