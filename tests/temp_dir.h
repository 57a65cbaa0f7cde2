#pragma once

#include <optional>
#include <string>
#include <string_view>

// A fresh folder under `base` (by default the system's temporary folder), removed with
// everything in it when the object goes. path() ends in "/".
class TempDir {
public:
    explicit TempDir(const std::string& base = "");
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return m_path; }
    std::string operator/(std::string_view name) const { return m_path + std::string(name); }
    // Write a file or make a folder below this one, parents created; the full path.
    std::string write(std::string_view name, std::string_view bytes) const;
    std::string mkdir(std::string_view name) const;

private:
    std::string m_path;
};

// A whole file's bytes, "" when it cannot be read; writing creates the parent folders.
std::string readFileBytes(const std::string& path);
void writeFileBytes(const std::string& path, std::string_view bytes);

// Points HOME at a fresh folder and unsets XDG_DATA_HOME for the object's lifetime, so a
// test never touches the real user's data. The previous values come back afterwards.
class TempHome {
public:
    TempHome();
    ~TempHome();

    std::string home() const { return m_dir.path() + "home"; }
    std::string dataHome() const { return m_dir.path() + "home/.local/share"; }

private:
    TempDir m_dir;
    std::optional<std::string> m_oldHome, m_oldXdg;
};
