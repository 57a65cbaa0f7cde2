#include "core/stderr_prompter.h"

#include <string>

namespace {

// CR LF inside a message reads better as a plain line break on a terminal.
std::string withUnixBreaks(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n')
            continue;
        out += text[i];
    }
    return out;
}

}  // namespace

Answer StderrPrompter::message(std::string_view text, std::string_view title, Buttons buttons,
                               Icon /*icon*/) {
    std::string line = std::string(title) + ": " + withUnixBreaks(text);
    Answer answer = Answer::Ok;
    if (buttons != Buttons::Ok) {
        answer = m_answerYes ? Answer::Yes : Answer::No;
        line += m_answerYes ? " [answered Yes]" : " [answered No]";
    }
    std::fprintf(m_out, "%s\n", line.c_str());
    return answer;
}

std::optional<std::string> StderrPrompter::input(std::string_view prompt, std::string_view title,
                                                 std::string_view /*proposed*/) {
    std::fprintf(m_out, "%s: %s [cancelled]\n", std::string(title).c_str(),
                 withUnixBreaks(prompt).c_str());
    return std::nullopt;
}
