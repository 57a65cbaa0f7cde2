#pragma once

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
