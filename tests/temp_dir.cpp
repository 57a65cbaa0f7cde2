#include "tests/temp_dir.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace fs = std::filesystem;

TempDir::TempDir(const std::string& base) {
    std::string pattern =
        (base.empty() ? fs::temp_directory_path() : fs::path(base)) / "veskor-test-XXXXXX";
    if (!mkdtemp(pattern.data()))
        throw std::runtime_error("cannot create a temporary folder");
    m_path = pattern + "/";
}

TempDir::~TempDir() {
    std::error_code ec;
    fs::remove_all(m_path, ec);
}

std::string TempDir::write(std::string_view name, std::string_view bytes) const {
    writeFileBytes(*this / name, bytes);
    return *this / name;
}

std::string TempDir::mkdir(std::string_view name) const {
    fs::create_directories(*this / name);
    return *this / name;
}

std::string readFileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void writeFileBytes(const std::string& path, std::string_view bytes) {
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream(path, std::ios::binary | std::ios::trunc)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

namespace {

std::optional<std::string> getEnv(const char* name) {
    const char* value = std::getenv(name);
    return value ? std::optional<std::string>(value) : std::nullopt;
}

void setEnv(const char* name, const std::optional<std::string>& value) {
    value ? setenv(name, value->c_str(), 1) : unsetenv(name);
}

}  // namespace

TempHome::TempHome() : m_oldHome(getEnv("HOME")), m_oldXdg(getEnv("XDG_DATA_HOME")) {
    setEnv("HOME", m_dir.mkdir("home"));
    setEnv("XDG_DATA_HOME", std::nullopt);
}

TempHome::~TempHome() {
    setEnv("HOME", m_oldHome);
    setEnv("XDG_DATA_HOME", m_oldXdg);
}
