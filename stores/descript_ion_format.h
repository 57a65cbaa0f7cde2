#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

// The entries of a "descript.ion" file, read from and written into its bytes: one entry
// per item, `NAME DESCRIPTION`, NAME in double quotes when it holds a blank.
//
// Each writer keeps a multi-line description its own way, and all three read back with
// their line breaks:
//     a.txt First\xA0Second               breaks as U+00A0 in a UTF-8 or UTF-16 file
//                                          (Double Commander)
//     a.txt First\nSecond\x04\xC2          "\n" for each break, the line ending in the
//                                          bytes 04 C2 (Total Commander)
//     a.txt First                          continuation lines that start with a blank or
//      Second                              a tab (Far)
// Encodings: UTF-8 with or without BOM, UTF-16LE with BOM, otherwise 8-bit text read
// as Windows-1252 (a valid UTF-8 sequence in it reads as UTF-8).

// An item's name as entries are looked up: read as the file's lines are (bytes that are
// not UTF-8 as Windows-1252), letter case ignored.
[[nodiscard]] std::string descriptIonKey(std::string_view name);

// Every entry's description (CR LF breaks) by its descriptIonKey(); the first entry of
// a name counts.
[[nodiscard]] std::unordered_map<std::string, std::string> descriptIonEntries(
    std::string_view fileBytes);

// The description of the entry for `name` in a file's bytes, CR LF breaks, nothing
// trimmed but the separator after the name; nullopt when no entry names it. The first
// entry counts.
[[nodiscard]] std::optional<std::string> descriptionIn(std::string_view fileBytes,
                                                       std::string_view name);

// The file's bytes with the entry for `name` replaced (where the first one stood; later
// ones removed), added at the end, or removed when `description` is nullopt or holds
// nothing but line breaks. Every other line stays byte for byte, and the file keeps its
// encoding, BOM and line ends. A multi-line description takes the form that the
// file's own reader shows: U+00A0 breaks in a UTF-8 or UTF-16 file, Total Commander's
// in an 8-bit one. nullopt when no entry is left: the file goes. A name that the
// format cannot hold (a quote with a blank, or a leading quote) leaves the bytes as
// they are.
[[nodiscard]] std::optional<std::string> withEntry(std::string_view fileBytes,
                                                   std::string_view name,
                                                   std::optional<std::string_view> description);
