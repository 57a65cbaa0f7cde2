#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "cli/cli.h"
#include "tests/temp_dir.h"

// veskor-cli run in-process in a temporary home, on the files of a folder "docs".
class CliFixture : public ::testing::Test {
protected:
    using Args = std::vector<std::string>;

    // Runs veskor-cli with the arguments and standard input into out_ and err_.
    int run(const Args& args, const std::string& input = "", bool terminal = false) {
        std::istringstream in(input);
        out_.str("");
        err_.str("");
        return runCli(args, program_.path(), {in, out_, err_, terminal});
    }
    // Stores a description as `set` does; the test stops when it cannot.
    void describe(const std::string& path, const std::string& text) {
        ASSERT_EQ(run({"set", path, text}), 0) << err_.str();
    }
    // What `get` prints, or "(none)".
    std::string get(const std::string& path) {
        return run({"get", path}) == 0 ? out_.str() : "(none)";
    }
    std::string failsafeFolder() const { return home_.dataHome() + "/Kelvane/Veskor/failsafe db"; }
    std::string failsafeFile() const { return failsafeFolder() + "/ver1.7.dat"; }

    TempHome home_;
    TempDir program_, docs_;
    std::ostringstream out_, err_;
};
