#pragma once

#include <string>
#include <string_view>

// Text that a file holds (a name, a description), made safe to show on a terminal: no
// part of it can move the cursor, clear the screen, set the window title, write the
// clipboard or start any other terminal sequence.
//
// Control characters become escapes: "\t", "\n" and "\r" for those three, "\xNN" for
// every other one of U+0000..U+001F and for DEL, "\u0080".."\u009f" for the C1 controls.
// A byte that is not part of valid UTF-8 becomes "\xNN" (some terminals read a lone
// 0x9B as the start of a sequence). Everything else, backslashes included, is kept, so
// that ordinary text reads as it is. Characters listed in `kept` (controls below U+0020
// only, such as "\n\t" for a text of several lines) pass unchanged.
[[nodiscard]] std::string escapedControls(std::string_view text, std::string_view kept = "");
