#pragma once

#include <string>

#include "core/prompter.h"
#include "core/shared_state.h"

// config.dat: the header "[Veskor 1.9]" and one "Key=value" line per setting, CR LF
// line ends. Failures are shown in boxes titled "Veskor Repair Tool".

// Writes the header and the seven settings of `options`, replacing the file. A
// failure is shown here and not reported: the options in memory stay as they are.
void createConfigFile(const std::string& configFile, const Options& options,
                      Prompter& prompter);

enum class ConfigResult { Read, EndProgram };

// Reads the settings into `options`, re-creating the file from `options` first when it
// has no header. EndProgram after the "Cannot process" message has been shown.
[[nodiscard]] ConfigResult processConfigFile(const std::string& configFile, Options& options,
                                             Prompter& prompter);
