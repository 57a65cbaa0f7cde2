#include "tests/temp_dir.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace fs = std::filesystem;

TempDir::TempDir() {
    std::string pattern = (fs::temp_directory_path() / "veskor-test-XXXXXX").string();
    if (!mkdtemp(pattern.data()))
        throw std::runtime_error("cannot create a temporary folder");
    m_path = pattern + "/";
}

TempDir::~TempDir() {
    std::error_code ec;
    // Tests make files read-only; give the owner write permission back before removing.
    for (auto it = fs::recursive_directory_iterator(m_path, ec);
         !ec && it != fs::recursive_directory_iterator(); it.increment(ec)) {
        if (!it->is_symlink())
            fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, ec);
    }
    fs::remove_all(m_path, ec);
}

std::string TempDir::write(std::string_view name, std::string_view bytes) const {
    std::string full = *this / name;
    writeFileBytes(full, bytes);
    return full;
}

std::string TempDir::mkdir(std::string_view name) const {
    std::string full = *this / name;
    fs::create_directories(full);
    return full;
}

std::string readFileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void writeFileBytes(const std::string& path, std::string_view bytes) {
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

namespace {

void restore(const char* name, bool had, const std::string& value) {
    if (had)
        setenv(name, value.c_str(), 1);
    else
        unsetenv(name);
}

}  // namespace

TempHome::TempHome() {
    if (const char* v = std::getenv("HOME")) {
        m_hadHome = true;
        m_oldHome = v;
    }
    if (const char* v = std::getenv("XDG_DATA_HOME")) {
        m_hadXdg = true;
        m_oldXdg = v;
    }
    m_dir.mkdir("home");
    setenv("HOME", home().c_str(), 1);
    unsetenv("XDG_DATA_HOME");
}

TempHome::~TempHome() {
    restore("HOME", m_hadHome, m_oldHome);
    restore("XDG_DATA_HOME", m_hadXdg, m_oldXdg);
}
