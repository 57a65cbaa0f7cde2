// Writes the benchmarks' data:
//   make_data db FILE RECORDS KEY POSITION   a failsafe database of RECORDS records,
//       about 200 bytes each; the record at POSITION (0-based) is KEY's
//   make_data index FOLDER ENTRIES           ENTRIES files f00000.txt... in FOLDER and
//       a 00_index.txt with a two-line entry for each
//   make_data files FOLDER COUNT TEMPLATE    COUNT files f00000.txt... in FOLDER, each
//       described in its summary stream: a copy of TEMPLATE's
//   make_data import TREE FOLDERS ENTRIES FILE   folders TREE/d0... with ENTRIES empty
//       files f00000.txt... each, and FILE: one import line per file
#include <sys/stat.h>
#include <sys/xattr.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench_lines.h"

namespace {

void writeRecord(std::FILE* out, const std::string& key, int i) {
    std::fprintf(out,
                 "Veskor failsafe DB 1.7 BEGIN %s\r\n"
                 "Description number %d of the benchmark database, first of its two lines\r\n"
                 "and the second line, which says a little more about file number %d\r\n"
                 "Veskor failsafe DB 1.7 END %s\r\n",
                 key.c_str(), i, i, key.c_str());
}

int makeDb(const char* file, int records, const std::string& key, int position) {
    std::FILE* out = std::fopen(file, "wb");
    if (!out)
        return 1;
    char name[64];
    for (int i = 0; i < records; ++i) {
        std::snprintf(name, sizeof name, "/BENCH/ELSEWHERE/FILE%06d.TXT", i);
        writeRecord(out, i == position ? key : std::string(name), i);
    }
    return std::fclose(out) == 0 ? 0 : 1;
}

int makeIndex(const std::string& folder, int entries) {
    std::FILE* index = std::fopen((folder + "/00_index.txt").c_str(), "wb");
    if (!index)
        return 1;
    char name[32];
    for (int i = 0; i < entries; ++i) {
        std::snprintf(name, sizeof name, "f%05d.txt", i);
        if (std::FILE* item = std::fopen((folder + "/" + name).c_str(), "wb"))
            std::fclose(item);
        std::fprintf(index, "%-13sEntry %d of the index\r\n             its second line\r\n", name,
                     i);
    }
    return std::fclose(index) == 0 ? 0 : 1;
}

int makeDescribedFiles(const std::string& folder, int count, const char* templateFile) {
    const char* attribute = "user.\005SummaryInformation";
    char value[65536];
    ssize_t size = ::getxattr(templateFile, attribute, value, sizeof value);
    if (size < 0)
        return 1;
    char name[32];
    for (int i = 0; i < count; ++i) {
        std::snprintf(name, sizeof name, "/f%05d.txt", i);
        const std::string path = folder + name;
        std::FILE* item = std::fopen(path.c_str(), "wb");
        if (!item)
            return 1;
        std::fclose(item);
        if (::setxattr(path.c_str(), attribute, value, static_cast<std::size_t>(size), 0) != 0)
            return 1;
    }
    return 0;
}

int makeImport(const std::string& tree, int folders, int entries, const char* file) {
    std::FILE* lines = std::fopen(file, "wb");
    if (!lines)
        return 1;
    char name[64];
    for (int f = 0; f < folders; ++f) {
        ::mkdir((tree + "/d" + std::to_string(f)).c_str(), 0777);
        for (int i = 0; i < entries; ++i) {
            std::snprintf(name, sizeof name, "/d%d/f%05d.txt", f, i);
            const std::string path = tree + name;
            std::FILE* item = std::fopen(path.c_str(), "wb");
            if (!item)
                return 1;
            std::fclose(item);
            const std::string text =
                importDescription(path, static_cast<std::uint64_t>(f * entries + i));
            std::fprintf(lines, "{\"path\":\"%s\",\"description\":\"%s\\nand its second line\"}\n",
                         path.c_str(), text.c_str());
        }
    }
    return std::fclose(lines) == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    std::string mode = argc > 1 ? argv[1] : "";
    if (mode == "db" && argc == 6)
        return makeDb(argv[2], std::atoi(argv[3]), argv[4], std::atoi(argv[5]));
    if (mode == "index" && argc == 4)
        return makeIndex(argv[2], std::atoi(argv[3]));
    if (mode == "files" && argc == 5)
        return makeDescribedFiles(argv[2], std::atoi(argv[3]), argv[4]);
    if (mode == "import" && argc == 6)
        return makeImport(argv[2], std::atoi(argv[3]), std::atoi(argv[4]), argv[5]);
    std::fprintf(stderr,
                 "usage: make_data db FILE RECORDS KEY POSITION | index FOLDER ENTRIES | files "
                 "FOLDER COUNT TEMPLATE | import TREE FOLDERS ENTRIES FILE\n");
    return 64;
}
