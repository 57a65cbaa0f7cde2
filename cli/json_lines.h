#pragma once

#include <optional>
#include <string>

// One description per line of JSON, as `ls --json`, `find --json` and `export` write
// them and `import` reads them:
//   {"path":"/home/ann/plan.txt","description":"First line\nSecond","source":"NTFS"}
// Text is UTF-8; the description has LF breaks and no final one.

struct DescriptionLine {
    std::string path, description, source;
};

// The line, without its line break; nullopt when the path is not UTF-8 and so could
// not be found again from the line.
[[nodiscard]] std::optional<std::string> jsonLine(const DescriptionLine& line);

// The path and description of a line; nullopt when it is not such an object.
[[nodiscard]] std::optional<DescriptionLine> parseJsonLine(const std::string& line);
