#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

// The picker's rules that need no window: where it opens, which drive holds a folder,
// how a folder and a file name make the chosen target, which names the file list's
// pattern lets through, and the version line. Paths use "/"; a folder is kept
// without a trailing "/", except the root "/" itself.

// "Veskor version 2.3.2"; the revision is left out when it is 0 ("Veskor version 2.3").
[[nodiscard]] std::string versionLine(int major, int minor, int revision);

// The folder the picker opens on for the home folder `profile`: its "My Documents" when
// `exists` finds anything of that name, else its "Documents", else `profile` itself.
// Empty when `profile` is empty: the lists then stay on the current folder.
[[nodiscard]] std::string startFolder(const std::string& profile,
                                      const std::function<bool(const std::string&)>& exists);

// The mount point among `mounts` that holds `folder`: the longest one that is the folder
// itself or one of its parents; "/" when none is.
[[nodiscard]] std::string driveOf(const std::string& folder,
                                  const std::vector<std::string>& mounts);

// `path` as the lists keep a folder: taken from `base` when relative, "." and ".."
// resolved by name (links are not followed), no repeated or trailing "/". Empty for "".
[[nodiscard]] std::string folderPathFrom(const std::string& base, const std::string& path);

// What choosing gives: the folder followed by the name with one "/" between them, or the
// folder itself when no name is selected.
[[nodiscard]] std::string choiceTarget(const std::string& folder, const std::string& name);

// True when `name` matches `pattern`: "*" stands for any run of characters, "?" for one
// character, ASCII letters match in either case, and ";" separates alternatives
// ("*.txt;*.doc"). A pattern ending in ".*" also matches a name without any extension,
// so "*.*" matches every name.
[[nodiscard]] bool matchesPattern(std::string_view name, std::string_view pattern);
