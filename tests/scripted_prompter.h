#pragma once

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "contracts/prompter.h"

// A prompter for tests: records every box it is shown and answers from a script.
// Message boxes with only OK answer Ok; a question with no scripted answer left is
// answered Cancel (No for a Yes/No box), so an unexpected question cannot say Yes.
class ScriptedPrompter : public Prompter {
public:
    struct Shown {
        std::string text, title;
        Buttons buttons;
        Icon icon;
    };
    struct Input {
        std::string prompt, title, proposed;
    };

    Answer message(std::string_view text, std::string_view title, Buttons buttons,
                   Icon icon) override {
        shown.push_back({std::string(text), std::string(title), buttons, icon});
        if (buttons == Buttons::Ok)
            return Answer::Ok;
        return next(answers, buttons == Buttons::YesNo ? Answer::No : Answer::Cancel);
    }

    std::optional<std::string> input(std::string_view prompt, std::string_view title,
                                     std::string_view proposed) override {
        inputs.push_back({std::string(prompt), std::string(title), std::string(proposed)});
        return next(inputAnswers, std::optional<std::string>());
    }

    // The texts of every message box shown, in order.
    std::vector<std::string> texts() const {
        std::vector<std::string> out;
        for (const auto& s : shown)
            out.push_back(s.text);
        return out;
    }

    std::deque<Answer> answers;
    std::deque<std::optional<std::string>> inputAnswers;
    std::vector<Shown> shown;
    std::vector<Input> inputs;

private:
    template <typename T>
    static T next(std::deque<T>& script, T unscripted) {
        if (script.empty())
            return unscripted;
        T front = std::move(script.front());
        script.pop_front();
        return front;
    }
};
