#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// Text as it meets files and streams. Inside the program text is UTF-8; files are
// written in UTF-8, and files written by Windows programs (Windows-1252) still read
// right because every byte that is not part of a valid UTF-8 sequence is decoded as
// Windows-1252.

// Decodes file bytes: valid UTF-8 sequences as they are, every other byte as
// Windows-1252.
[[nodiscard]] std::string decodeFileText(std::string_view bytes);

// The length of the valid UTF-8 sequence at `pos` and its code point; 0 when the bytes
// there are not one.
[[nodiscard]] std::size_t utf8Sequence(std::string_view text, std::size_t pos, char32_t& code);

// Decodes Windows-1252 bytes; every byte maps to one character.
[[nodiscard]] std::string decodeWindows1252(std::string_view bytes);

// Number of characters (code points) in UTF-8 text; a stray byte counts as one.
[[nodiscard]] std::size_t characterCount(std::string_view utf8);

// The first `count` characters of UTF-8 text, and the characters from `start` on.
[[nodiscard]] std::string_view firstCharacters(std::string_view utf8, std::size_t count);
[[nodiscard]] std::string_view charactersFrom(std::string_view utf8, std::size_t start);

// Unicode simple upper case (ASCII and beyond: "é" becomes "É").
[[nodiscard]] std::string upperCase(std::string_view utf8);

// Converts UTF-8 to a Windows code page (1252, 65001, 1200 for UTF-16LE, 932,
// 10000...); nullopt when the page is unknown to iconv or a character does not fit.
[[nodiscard]] std::optional<std::string> encodeCodePage(std::string_view utf8, unsigned codePage);

// Converts text in a Windows code page to UTF-8; nullopt when the page is unknown or
// the bytes are not valid in it.
[[nodiscard]] std::optional<std::string> decodeCodePage(std::string_view bytes, unsigned codePage);
