#include "cli/progress.h"

#include <algorithm>
#include <ostream>

#include "core/escaped_text.h"

namespace {

constexpr auto kRedrawInterval = std::chrono::milliseconds(100);

}  // namespace

Progress::Progress(const CliStreams& streams, std::string what)
    : m_err(streams.errIsTerminal ? &streams.err : nullptr), m_what(std::move(what)) {}

Progress::~Progress() {
    if (m_err && m_drawnWidth > 0)
        *m_err << '\r' << std::string(m_drawnWidth, ' ') << '\r' << std::flush;
}

void Progress::step() {
    ++m_count;
    show(std::to_string(m_count));
}

void Progress::show(const std::string& detail) {
    if (!m_err)
        return;
    auto now = std::chrono::steady_clock::now();
    if (m_drawnWidth == 0 || now - m_lastDraw >= kRedrawInterval) {
        m_lastDraw = now;
        draw(detail);
    }
}

void Progress::draw(const std::string& detail) {
    std::string line = "veskor-cli: " + m_what + " " + escapedControls(detail) + "...";
    m_drawnWidth = std::max(m_drawnWidth, line.size());
    line.resize(m_drawnWidth, ' ');  // wipes what a longer line left
    *m_err << '\r' << line << std::flush;
}
