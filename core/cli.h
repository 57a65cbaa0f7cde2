#pragma once

#include <iosfwd>
#include <string>
#include <vector>

// veskor-cli: read, write and inspect a target's description from scripts, on the same
// data folder, settings and stores as the editor. It runs the start-up up to the
// settings, never checks for updates and never writes registration scripts.
//
// Exit codes: 0 done; 1 a store failed or a question was answered No (the editor would
// return to editing); 2 the target was refused or is missing; 3 no description found;
// 4 the save ended without storing; 64 a wrong call.

struct CliStreams {
    std::istream& in;
    std::ostream& out;
    std::ostream& err;
};

// `args` are the arguments after the program's name.
[[nodiscard]] int runCli(const std::vector<std::string>& args, const std::string& appPath,
                         CliStreams streams);
