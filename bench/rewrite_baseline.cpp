// The save's baseline: rewrites a failsafe database and a folder index once, the way
// any careful program replaces a file (stream into FILE.tmp, flush, fsync, rename,
// fsync the folder), putting a new entry first and dropping the old one, and no more.
//   rewrite_baseline DB KEY INDEX NAME
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <string_view>

#include "bench_lines.h"

namespace {

class Replacement {
public:
    explicit Replacement(std::string path)
        : m_path(std::move(path)), m_out(std::fopen((m_path + ".tmp").c_str(), "wb")) {}
    bool ok() const { return m_out != nullptr; }
    void line(std::string_view text) {
        std::fwrite(text.data(), 1, text.size(), m_out);
        std::fwrite("\r\n", 1, 2, m_out);
    }
    bool commit() {
        bool good = std::fflush(m_out) == 0 && ::fsync(::fileno(m_out)) == 0;
        good = std::fclose(m_out) == 0 && good;
        good = good && std::rename((m_path + ".tmp").c_str(), m_path.c_str()) == 0;
        std::string folder = m_path.substr(0, m_path.rfind('/') + 1);
        int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY);
        if (fd >= 0) {
            ::fsync(fd);
            ::close(fd);
        }
        return good;
    }

private:
    std::string m_path;
    std::FILE* m_out;
};

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
