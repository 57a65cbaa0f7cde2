#pragma once

#include <string>
#include <string_view>

// Lexical helpers for host paths ("/" separators, folders written with a trailing
// "/"). None of them touches the file system or follows a link.

// An absolute path with "." and ".." resolved and repeated separators folded. A
// trailing separator is kept, so "/home/docs/" still names a folder by its form;
// a final "." or ".." leaves none ("/home/." is "/home"). ".." above the root stays
// at the root. A relative path is normalised as if it started at "/".
[[nodiscard]] std::string lexicallyNormal(std::string_view path);

// Everything after the last "/"; the whole path when it holds none. Empty for a
// path that ends in "/".
[[nodiscard]] std::string_view lastComponent(std::string_view path);

// Everything up to and including the last "/"; empty when the path holds none.
[[nodiscard]] std::string_view folderOf(std::string_view path);

// The path with a "/" appended unless it already ends in one.
[[nodiscard]] std::string withTrailingSeparator(std::string_view path);
