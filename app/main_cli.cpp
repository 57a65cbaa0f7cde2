#include <unistd.h>

#include <iostream>
#include <string>
#include <vector>

#include "cli/cli.h"
#include "platform/environment.h"

int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    std::vector<std::string> args(argv + 1, argv + argc);
    return runCli(args, programFolder(),
                  {std::cin, std::cout, std::cerr, ::isatty(2) == 1, ::isatty(1) == 1});
}
