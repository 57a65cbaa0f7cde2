// The load's baseline: reads a failsafe database line by line, compares each line
// with the key's begin line and prints the record's lines.
//   scan_baseline DB KEY
#include <cstdio>
#include <string>
#include <string_view>

#include "bench_lines.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: scan_baseline DB KEY\n");
        return 64;
    }
    const std::string begin = std::string("Veskor failsafe DB 1.7 BEGIN ") + argv[2];
    const std::string end = std::string("Veskor failsafe DB 1.7 END ") + argv[2];
    Lines in(argv[1]);
    std::string text;
    std::string_view line;
    bool inside = false;
    while (in.next(line)) {
        if (inside && line == end)
            inside = false;
        else if (inside)
            text.append(line).append("\n");
        else
            inside = line == begin;
    }
    std::fwrite(text.data(), 1, text.size(), stdout);
    return text.empty() ? 3 : 0;
}
