#pragma once

#include <optional>
#include <string>
#include <string_view>

// How the program asks the user something or tells them of a failure: modal message
// boxes and input boxes. The editor shows them as dialogs; veskor-cli and the tests
// answer them without a window. Texts are UTF-8 with CR LF line breaks.

enum class Buttons { Ok, YesNo, YesNoCancel };
enum class Icon { None, Critical };
enum class Answer { Ok, Yes, No, Cancel };

struct Prompter {
    virtual ~Prompter() = default;
    // A modal message box with exactly this text, title, buttons and icon; the answer.
    // Closing a box counts as Cancel (as Ok when its only button is OK).
    virtual Answer message(std::string_view text, std::string_view title, Buttons buttons,
                           Icon icon) = 0;
    // An input box with a proposed text; nullopt when cancelled.
    virtual std::optional<std::string> input(std::string_view prompt, std::string_view title,
                                             std::string_view proposed) = 0;
};

// The title of every message box of the main program.
inline constexpr std::string_view kProgramTitle = "Veskor";

// A refusal or store failure: critical icon, OK button, title "Veskor".
inline void showError(Prompter& prompter, std::string_view text) {
    prompter.message(text, kProgramTitle, Buttons::Ok, Icon::Critical);
}

// A question without an icon, titled "Veskor".
inline Answer ask(Prompter& prompter, std::string_view text, Buttons buttons) {
    return prompter.message(text, kProgramTitle, buttons, Icon::None);
}
