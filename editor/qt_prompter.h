#pragma once

#include "contracts/prompter.h"

// Message and input boxes as Qt dialogs, modal over the active window. Texts arrive
// with CR LF breaks and are shown with the toolkit's own. Closing a box answers
// Cancel, or the box's only button: No for a Yes/No question, Ok for a message.
class QtPrompter : public Prompter {
public:
    Answer message(std::string_view text, std::string_view title, Buttons buttons,
                   Icon icon) override;
    std::optional<std::string> input(std::string_view prompt, std::string_view title,
                                     std::string_view proposed) override;
};
