#pragma once

#include <string>
#include <string_view>

// A fresh folder under the system's temporary folder, removed with everything in it
// when the object goes. path() ends in "/".
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return m_path; }
    // path() + name.
    std::string operator/(std::string_view name) const { return m_path + std::string(name); }

    // Writes a file below the folder (parents created) and returns its full path.
    std::string write(std::string_view name, std::string_view bytes) const;
    // Makes a folder below the folder (parents created) and returns its full path.
    std::string mkdir(std::string_view name) const;

private:
    std::string m_path;
};

// Reads a whole file; "" when it cannot be read.
std::string readFileBytes(const std::string& path);
// Writes a whole file, its parent folders created.
void writeFileBytes(const std::string& path, std::string_view bytes);

// Points HOME and XDG_DATA_HOME at fresh folders for the object's lifetime, so a test
// never touches the real user's data. The previous values come back afterwards.
class TempHome {
public:
    TempHome();
    ~TempHome();
    TempHome(const TempHome&) = delete;
    TempHome& operator=(const TempHome&) = delete;

    std::string home() const { return m_dir.path() + "home"; }
    std::string dataHome() const { return m_dir.path() + "home/.local/share"; }

private:
    TempDir m_dir;
    std::string m_oldHome, m_oldXdg;
    bool m_hadHome = false, m_hadXdg = false;
};
