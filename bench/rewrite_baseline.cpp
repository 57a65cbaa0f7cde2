// The save's baseline: rewrites a failsafe database and a folder index once, the way
// any careful program replaces a file (stream into FILE.tmp, flush, fsync, rename,
// fsync the folder), putting a new entry first and dropping the old one, and no more.
//   rewrite_baseline DB KEY INDEX NAME
#include <cstdio>
#include <string>
#include <string_view>

#include "bench_lines.h"

namespace {

bool rewriteDb(const std::string& db, const std::string& key) {
    const std::string begin = "Veskor failsafe DB 1.7 BEGIN " + key;
    const std::string end = "Veskor failsafe DB 1.7 END " + key;
    Replacement out(db);
    Lines in(db);
    if (!out.ok() || !in.ok())
        return false;
    out.line(begin);
    out.line("the new description");
    out.line(end);
    std::string_view line;
    bool skipping = false;
    while (in.next(line)) {
        if (skipping || line == begin)
            skipping = line != end;
        else
            out.line(line);
    }
    return out.commit();
}

bool rewriteIndex(const std::string& index, const std::string& name) {
    Replacement out(index);
    Lines in(index);
    if (!out.ok() || !in.ok())
        return false;
    std::string head = name;
    head.resize(13, ' ');
    out.line(head + "the new description");
    std::string_view line;
    bool skipping = false;
    while (in.next(line)) {
        if (!line.starts_with("             "))
            skipping = line.starts_with(head);
        if (!skipping && !line.empty())
            out.line(line);
    }
    return out.commit();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        std::fprintf(stderr, "usage: rewrite_baseline DB KEY INDEX NAME\n");
        return 64;
    }
    return rewriteDb(argv[1], argv[2]) && rewriteIndex(argv[3], argv[4]) ? 0 : 1;
}
