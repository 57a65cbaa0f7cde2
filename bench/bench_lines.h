#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

// Line reading for the baselines: a line ends at LF, an optional CR before it is
// dropped. The plain C library, the way a careful hand-written program would do it.
class Lines {
public:
    explicit Lines(const std::string& path) : m_file(std::fopen(path.c_str(), "rb")) {}
    ~Lines() {
        std::free(m_buffer);
        if (m_file)
            std::fclose(m_file);
    }
    bool ok() const { return m_file != nullptr; }

    bool next(std::string_view& line) {
        ssize_t n = ::getline(&m_buffer, &m_capacity, m_file);
        if (n <= 0)
            return false;
        std::size_t size = static_cast<std::size_t>(n);
        if (m_buffer[size - 1] == '\n')
            --size;
        if (size > 0 && m_buffer[size - 1] == '\r')
            --size;
        line = std::string_view(m_buffer, size);
        return true;
    }

private:
    std::FILE* m_file;
    char* m_buffer = nullptr;
    std::size_t m_capacity = 0;
};

// A file replaced the way any careful program does it: stream into FILE.tmp, flush,
// fsync, rename, fsync the folder.
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

// The first line of the import's description of entry `number` at `path`; the second is
// "and its second line". Descriptions differ as real ones do, in more than a counter's
// digits: ext4 hashes an attribute block by folding its words together, and values
// that differ only in a few digits would all share a hash and make every write search
// a long chain, which no real set of descriptions does.
inline std::string importDescription(const std::string& path, std::uint64_t number) {
    std::uint64_t mixed = number + 0x9E3779B97F4A7C15u;  // splitmix64
    mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9u;
    mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBu;
    mixed ^= mixed >> 31;
    char word[17];
    std::snprintf(word, sizeof word, "%016" PRIx64, mixed);
    return std::string("Imported description ") + word + " of " + path;
}
