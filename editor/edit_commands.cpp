#include "editor/edit_commands.h"

#include <QChar>
#include <QString>
#include <string>

namespace {

constexpr std::string_view kFindTitle = "Find - Veskor";
constexpr std::string_view kReplaceTitle = "Replace - Veskor";

// Case-folded code points, so that matching ignores case beyond ASCII as well.
std::u32string foldedCodePoints(std::string_view text) {
    const QList<uint> ucs4 =
        QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).toUcs4();
    std::u32string folded;
    folded.reserve(static_cast<std::size_t>(ucs4.size()));
    for (uint codePoint : ucs4)
        folded.push_back(QChar::toCaseFolded(static_cast<char32_t>(codePoint)));
    return folded;
}

// The text of a box before `start` + `replacement` + the text after `start + length`,
// positions in characters.
std::string spliced(std::string_view text, std::size_t start, std::size_t length,
                    std::string_view replacement) {
    const std::u32string codePoints =
        QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).toStdU32String();
    std::u32string result = codePoints.substr(0, start);
    result += QString::fromUtf8(replacement.data(), static_cast<qsizetype>(replacement.size()))
                  .toStdU32String();
    result += codePoints.substr(start + length);
    return QString::fromStdU32String(result).toUtf8().toStdString();
}

std::optional<std::string> askSearchText(std::string_view selection, Prompter& prompter) {
    std::optional<std::string> needle =
        prompter.input("Enter search string:", kFindTitle, selection);
    if (!needle || needle->empty())
        return std::nullopt;
    return needle;
}

// The replacement; an empty one only when the user agrees to remove the matches.
std::optional<std::string> askReplacement(Prompter& prompter) {
    std::optional<std::string> replacement =
        prompter.input("Enter replacement string:", kReplaceTitle, "");
    if (replacement && !replacement->empty())
        return replacement;
    if (prompter.message("Remove specified search string(s)?", kReplaceTitle, Buttons::YesNo,
                         Icon::None) != Answer::Yes)
        return std::nullopt;
    return std::string();
}

void selectMatch(EditorState& editor, std::size_t at, std::size_t length) {
    editor.selectText(at, length);
    editor.focusText();
}

}  // namespace

std::string counterText(std::string_view text) {
    if (text.empty())
        return "Description is empty.";
    const auto remaining =
        static_cast<long long>(kMaxDescriptionChars) - static_cast<long long>(characterCount(text));
    return std::to_string(remaining) + " characters remaining.";
}

BoxCommand boxCommandFor(int key, Qt::KeyboardModifiers modifiers) {
    if (key == Qt::Key_F3)
        return BoxCommand::Find;
    if (!modifiers.testFlag(Qt::ControlModifier))
        return BoxCommand::None;
    switch (key) {
        case Qt::Key_C:
            return BoxCommand::Copy;
        case Qt::Key_V:
            return BoxCommand::Paste;
        case Qt::Key_A:
            return BoxCommand::SelectAll;
        case Qt::Key_F:
            return BoxCommand::Find;
        case Qt::Key_H:
            return BoxCommand::Replace;
        default:
            return BoxCommand::None;
    }
}

std::size_t findIgnoringCase(std::string_view text, std::string_view needle, std::size_t from) {
    const std::u32string haystack = foldedCodePoints(text);
    if (from > haystack.size())
        return std::u32string::npos;
    return haystack.find(foldedCodePoints(needle), from);
}

void findCommand(EditorState& editor, std::string_view selection, Prompter& prompter) {
    const std::optional<std::string> needle = askSearchText(selection, prompter);
    if (!needle)
        return;
    const std::size_t length = characterCount(*needle);
    std::size_t from = 0;
    for (;;) {
        const std::size_t at = findIgnoringCase(editor.text(), *needle, from);
        if (at == std::u32string::npos)
            break;
        selectMatch(editor, at, length);
        from = at + length;
        if (prompter.message("Continue searching?", kFindTitle, Buttons::YesNo, Icon::None) !=
            Answer::Yes)
            return;
    }
    prompter.message("Done.", kFindTitle, Buttons::Ok, Icon::None);
}

void replaceCommand(EditorState& editor, std::string_view selection, Prompter& prompter) {
    const std::optional<std::string> needle = askSearchText(selection, prompter);
    if (!needle)
        return;
    const std::optional<std::string> replacement = askReplacement(prompter);
    if (!replacement)
        return;
    const std::size_t length = characterCount(*needle);
    std::size_t from = 0;
    for (;;) {
        const std::string text = editor.text();
        const std::size_t at = findIgnoringCase(text, *needle, from);
        if (at == std::u32string::npos)
            break;
        selectMatch(editor, at, length);
        switch (prompter.message("Replace? (Warning: cannot be undone)", kReplaceTitle,
                                 Buttons::YesNoCancel, Icon::None)) {
            case Answer::Yes:
                editor.setText(spliced(text, at, length, *replacement));
                from = at + characterCount(*replacement);
                break;
            case Answer::No:
                from = at + length;
                break;
            default:
                return;
        }
    }
    prompter.message("Done.", kReplaceTitle, Buttons::Ok, Icon::None);
}

bool cancelEndsProgram(SharedState& state, EditorState& editor, Prompter& prompter) {
    if (!editor.updateBold() || !editor.updateEnabled())
        return true;
    switch (ask(prompter, "Description has been modified.  Save before exiting?",
                Buttons::YesNoCancel)) {
        case Answer::Yes:
            // Whatever the save says, the program ends: a failed store has shown its
            // message and the user asked to leave.
            (void)Command1_Click(state, editor, prompter);
            return true;
        case Answer::No:
            return true;
        default:
            return false;
    }
}

SaveOutcome deleteDescription(SharedState& state, EditorState& editor, Prompter& prompter) {
    const std::string kept = editor.text();
    editor.setText("");
    const SaveOutcome outcome = Command1_Click(state, editor, prompter);
    if (!endsProgram(outcome))
        editor.setText(kept);
    return outcome;
}

bool endsProgram(SaveOutcome outcome) {
    return outcome == SaveOutcome::Stored || outcome == SaveOutcome::EndedWithoutStoring;
}
