#pragma once

#include <iostream>

#include "contracts/prompter.h"

// Prompts for a program without a display: every message goes to the error stream as
// "title: text", its line breaks as LF and its other control characters escaped, and every question
// is answered No unless the prompter was told to answer Yes. Input boxes are always cancelled.
class StderrPrompter : public Prompter {
public:
    explicit StderrPrompter(bool answerYes = false, std::ostream& out = std::cerr)
        : m_answerYes(answerYes), m_out(out) {}
    Answer message(std::string_view text, std::string_view title, Buttons buttons,
                   Icon icon) override;
    std::optional<std::string> input(std::string_view prompt, std::string_view title,
                                     std::string_view proposed) override;

private:
    bool m_answerYes;
    std::ostream& m_out;
};

// Text with CR LF line breaks as a terminal shows it: LF only.
std::string withUnixBreaks(std::string_view text);
