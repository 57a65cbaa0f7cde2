#pragma once

#include <string>
#include <system_error>
#include <vector>

// Starts a program with its arguments (argv[0] looked up in PATH) and does not wait
// for it; its output goes nowhere and it never becomes a zombie of ours.
[[nodiscard]] std::error_code startDetached(const std::vector<std::string>& argv);
