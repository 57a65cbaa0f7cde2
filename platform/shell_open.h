#pragma once

#include <functional>
#include <string>

// The desktop's "open" for a file, folder or URL. The GUI installs an opener built on
// the desktop's own (Qt's desktop services); tests install a recorder so that no test
// ever starts a browser. Without one installed, xdg-open is started.
using ShellOpener = std::function<bool(const std::string& pathOrUrl)>;

// Installs the opener and returns the one it replaces.
ShellOpener setShellOpener(ShellOpener opener);

// Opens the file, folder or URL; true when the opener accepted it.
bool shellOpen(const std::string& pathOrUrl);
