#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "core/cli.h"
#include "tests/temp_dir.h"

// veskor-cli run in-process on a target "plan.txt" in a temporary home: the vocabulary
// that the command-line tests share.

inline std::string failsafeFileOf(const TempHome& home) {
    return home.dataHome() + "/Kelvane/Veskor/failsafe db/ver1.7.dat";
}

// A failsafe record as the database keeps it; `key` is the upper-cased path.
inline std::string failsafeRecord(const std::string& key, const std::string& text) {
    return "Veskor failsafe DB 1.7 BEGIN " + key + "\r\n" + text +
           "\r\nVeskor failsafe DB 1.7 END " + key + "\r\n";
}

class CliFixture : public ::testing::Test {
protected:
    // Runs veskor-cli with the arguments and standard input; out_ and err_ get what it
    // wrote.
    int run(std::vector<std::string> args, const std::string& input = "") {
        std::istringstream in(input);
        out_.str("");
        err_.str("");
        return runCli(args, program_.path(), {in, out_, err_});
    }

    std::string failsafeFile() const { return failsafeFileOf(home_); }

    TempHome home_;
    TempDir program_, docs_;
    std::string target_ = docs_.write("plan.txt", "content");
    std::ostringstream out_, err_;
};
