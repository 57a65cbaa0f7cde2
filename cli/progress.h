#pragma once

#include <chrono>
#include <cstddef>
#include <string>

#include "cli/cli.h"

// The progress line of a long run: "veskor-cli: <what> <count>..." redrawn in place on
// standard error at most ten times a second, and wiped at the end. Shown only when
// standard error is a terminal, so pipes and logs never see it.
class Progress {
public:
    Progress(const CliStreams& streams, std::string what);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // One more item done: the line shows the count.
    void step();
    // The line shows `detail` after what is being done.
    void show(const std::string& detail);

private:
    void draw(const std::string& detail);

    std::ostream* m_err = nullptr;  // null when no line is shown
    std::string m_what;
    std::size_t m_count = 0;
    std::size_t m_drawnWidth = 0;
    std::chrono::steady_clock::time_point m_lastDraw;
};
