#pragma once

#include <optional>
#include <string>

// One description per line of JSON, as `ls --json`, `find --json` and `export` write
// them and `import` reads them:
//   {"path":"/home/ann/plan.txt","description":"First line\nSecond","source":"NTFS"}
// Text is UTF-8; the description has LF breaks and no final one. JSON holds text only,
// so a path that is not UTF-8 (a Latin-1 name, say) comes as text for people, its bytes
// read as Windows-1252, followed by its exact bytes in hexadecimal:
//   {"path":"/home/ann/café","path_hex":"2f686f6d652f616e6e2f636166e9",...}

struct DescriptionLine {
    std::string path;  // the exact bytes of the name
    std::string description, source;
};

// The line, without its line break.
[[nodiscard]] std::string jsonLine(const DescriptionLine& line);

// The path and description of a line, the path from "path_hex" where the line has it;
// nullopt when the line is not such an object or its "path_hex" is not hexadecimal.
[[nodiscard]] std::optional<DescriptionLine> parseJsonLine(const std::string& line);
