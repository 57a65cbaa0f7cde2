#pragma once

#include <string>

#include "contracts/prompter.h"
#include "contracts/shared_state.h"

// config.dat: the header "[Veskor 1.9]" and one "Key=value" line per setting, CR LF
// line ends. Failures are shown in boxes titled "Veskor Repair Tool".

// Writes the header and the seven settings of `options` in plain decimal, replacing the
// file atomically. A failure (including an existing file that its owner may not write)
// is shown here and not reported: the options in memory and the old file stay as they
// are.
void createConfigFile(const std::string& configFile, const Options& options, Prompter& prompter);

enum class ConfigResult { Read, EndProgram };

// Reads the settings into `options`, re-creating the file from `options` first when it
// has no header. The file is re-created at most once: when that fails and the old file
// still has no header, `options` stays as it is and the run goes on (the user has seen
// the "Cannot re-create" message). A line "Key=value" sets its setting, the last such
// line winning; values that lie outside their lists are kept as read. EndProgram after
// the "Cannot process" message has been shown (the file cannot be opened or read).
[[nodiscard]] ConfigResult processConfigFile(const std::string& configFile, Options& options,
                                             Prompter& prompter);
