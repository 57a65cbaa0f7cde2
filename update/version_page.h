#pragma once

#include <string>
#include <string_view>

// The version page's verdict, without Qt so that any bytes can be thrown at it: the
// page announces the version written before its first CR, LF or blank, and that
// version is newer when its text is the greater, compared character by character by
// character code (a text that another one starts with is the smaller).

// major.minor.revision, each number padded with "0" to three digits; a number of
// more digits is written as it is. 2.3.2 gives "002.003.002".
[[nodiscard]] std::string localVersionText(int major, int minor, int revision);

// The version a page announces: its text decoded like any file the program reads,
// cut before the first CR, then the first LF, then the first blank.
[[nodiscard]] std::string announcedVersion(std::string_view pageBytes);

// Whether the page's bytes announce a version above `localVersion`.
[[nodiscard]] bool announcesNewerVersion(std::string_view pageBytes, std::string_view localVersion);
