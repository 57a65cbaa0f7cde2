#pragma once

#include <string>

// Where the host keeps per-user data: $XDG_DATA_HOME when set and absolute, else
// $HOME/.local/share, else empty. No trailing "/".
[[nodiscard]] std::string appDataFolder();

// The user's home folder ($HOME), or empty. No trailing "/".
[[nodiscard]] std::string userProfile();

// The folder of the running executable, ending in "/".
[[nodiscard]] std::string programFolder();

// The current folder, ending in "/".
[[nodiscard]] std::string currentFolder();

// 1 on a 64-bit host, else 0.
[[nodiscard]] int IsHost64Bit();
