#pragma once

#include <iosfwd>
#include <string>
#include <vector>

// veskor-cli: read, write, list, search, move, copy, export and import descriptions
// from scripts, on the same data folder, settings and stores as the editor. It runs
// the start-up up to the settings, never checks for updates and never writes
// registration scripts. Each verb lives in a file of its own beside this one.
//
// Exit codes: 0 done; 1 something failed or a question was answered No (the rest was
// still done); 2 the target was refused, is missing, or the destination exists;
// 3 nothing found; 4 the save ended without storing; 64 a wrong call.

struct CliStreams {
    std::istream& in;
    std::ostream& out;
    std::ostream& err;
    // Long runs show a progress line on the error stream, only when it is a terminal.
    bool errIsTerminal = false;
    // Names and descriptions go to a terminal with their control characters escaped.
    bool outIsTerminal = false;
};

// `args` are the arguments after the program's name.
[[nodiscard]] int runCli(const std::vector<std::string>& args, const std::string& appPath,
                         CliStreams streams);
