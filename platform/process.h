#pragma once

#include <functional>
#include <string>
#include <system_error>
#include <vector>

// Starts a program with its arguments (argv[0] looked up in PATH) and does not wait
// for it; its output goes nowhere and it never becomes a zombie of ours.
[[nodiscard]] std::error_code startDetached(const std::vector<std::string>& argv);

// Runs a program (argv[0] looked up in PATH) with our standard streams and waits for
// it, calling `whileWaiting` about every 100 ms. `exitStatus` receives its exit status;
// an error when it could not be started or was killed by a signal.
[[nodiscard]] std::error_code runAndWait(const std::vector<std::string>& argv, int& exitStatus,
                                         const std::function<void()>& whileWaiting = {});
