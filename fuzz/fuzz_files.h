#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include "contracts/prompter.h"

// What the file fuzzers share: one folder per fuzzing process, made once, reused for
// every input and removed at exit, and a prompter that answers every box without a
// window. The folder is in memory (/dev/shm) where there is one, because every
// rewrite syncs its file to disk.

class FuzzFolder {
public:
    FuzzFolder() {
        std::error_code ec;
        std::string base = std::filesystem::is_directory("/dev/shm", ec) ? "/dev/shm" : "/tmp";
        std::string path = base + "/veskor-fuzz-XXXXXX";
        if (!::mkdtemp(path.data()))
            std::abort();
        m_path = path + "/";
    }
    ~FuzzFolder() {
        std::error_code ec;
        std::filesystem::remove_all(m_path, ec);
    }
    const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

// The folder's path, ending in "/".
inline const std::string& fuzzFolder() {
    static const FuzzFolder folder;
    return folder.path();
}

// Replaces `path` with exactly these bytes.
inline void writeFuzzFile(const std::string& path, std::string_view bytes) {
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (!f || std::fwrite(bytes.data(), 1, bytes.size(), f) != bytes.size())
        std::abort();
    std::fclose(f);
}

inline std::string readFuzzFile(const std::string& path) {
    std::string bytes;
    if (std::FILE* f = std::fopen(path.c_str(), "rb")) {
        char chunk[1 << 14];
        while (std::size_t n = std::fread(chunk, 1, sizeof chunk, f))
            bytes.append(chunk, n);
        std::fclose(f);
    }
    return bytes;
}

struct SilentPrompter : Prompter {
    Answer message(std::string_view, std::string_view, Buttons, Icon) override {
        ++shown;
        return Answer::Ok;
    }
    std::optional<std::string> input(std::string_view, std::string_view,
                                     std::string_view) override {
        return std::nullopt;
    }
    int shown = 0;
};
