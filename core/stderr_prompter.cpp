#include "core/stderr_prompter.h"

#include <string>

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

Answer StderrPrompter::message(std::string_view text, std::string_view title, Buttons buttons,
                               Icon /*icon*/) {
    m_out << title << ": " << withUnixBreaks(text);
    Answer answer = Answer::Ok;
    if (buttons != Buttons::Ok) {
        answer = m_answerYes ? Answer::Yes : Answer::No;
        m_out << (m_answerYes ? " [answered Yes]" : " [answered No]");
    }
    m_out << '\n';
    return answer;
}

std::optional<std::string> StderrPrompter::input(std::string_view prompt, std::string_view title,
                                                 std::string_view /*proposed*/) {
    m_out << title << ": " << withUnixBreaks(prompt) << " [cancelled]\n";
    return std::nullopt;
}
