// The baselines of the listings: a careful hand-written program that reads one
// attribute (the summary stream) of every entry and prints the names of those that
// have it, the way one would without any store but that one.
//   list_baseline ls DIR DB    the entries of DIR, then one scan of the database DB
//   list_baseline find DIR     every entry under DIR, folders walked depth first
//                              without following links
#include <dirent.h>
#include <sys/xattr.h>

#include <cstdio>
#include <string>
#include <string_view>

#include "bench_lines.h"

namespace {

const char* const kAttribute = "user.\005SummaryInformation";

bool described(const std::string& path) {
    static char value[4096];
    return ::getxattr(path.c_str(), kAttribute, value, sizeof value) > 0;
}

// Calls `each(path, isFolder)` for every entry of the folder; false when unreadable.
template <typename Each>
bool forEntries(const std::string& folder, Each each) {
    DIR* dir = ::opendir(folder.c_str());
    if (!dir)
        return false;
    while (dirent* entry = ::readdir(dir)) {
        std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            each(folder + "/" + std::string(name), entry->d_type == DT_DIR);
    }
    ::closedir(dir);
    return true;
}

void walk(const std::string& folder) {
    forEntries(folder, [](const std::string& path, bool isFolder) {
        if (described(path))
            std::printf("%s\n", path.c_str());
        if (isFolder)
            walk(path);
    });
}

// One pass over the database, counting the records, as any reader of it must.
long scan(const char* db) {
    Lines in(db);
    long records = 0;
    std::string_view line;
    while (in.next(line))
        records += line.starts_with("Veskor failsafe DB 1.7 BEGIN ");
    return records;
}

}  // namespace

int main(int argc, char** argv) {
    std::string mode = argc > 1 ? argv[1] : "";
    if (mode == "ls" && argc == 4) {
        forEntries(argv[2], [](const std::string& path, bool) {
            if (described(path))
                std::printf("%s\n", path.c_str());
        });
        return scan(argv[3]) >= 0 ? 0 : 1;
    }
    if (mode == "find" && argc == 3) {
        walk(argv[2]);
        return 0;
    }
    std::fprintf(stderr, "usage: list_baseline ls DIR DB | find DIR\n");
    return 64;
}
