#include "core/stderr_prompter.h"

#include <string>

#include "core/escaped_text.h"

std::string withUnixBreaks(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    // Whole runs up to each CR LF are copied at once: listings print a text per entry.
    for (std::size_t from = 0;;) {
        std::size_t crlf = text.find("\r\n", from);
        out.append(text.substr(from, crlf - from));
        if (crlf == std::string_view::npos)
            return out;
        from = crlf + 1;
    }
}

Answer StderrPrompter::message(std::string_view text, std::string_view title, Buttons buttons,
                               Icon /*icon*/) {
    m_out << title << ": " << escapedControls(withUnixBreaks(text), "\n");
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
    m_out << title << ": " << escapedControls(withUnixBreaks(prompt), "\n") << " [cancelled]\n";
    return std::nullopt;
}
