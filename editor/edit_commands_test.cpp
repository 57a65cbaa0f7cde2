#include "editor/edit_commands.h"

#include <gtest/gtest.h>

#include <QClipboard>
#include <QGuiApplication>
#include <QKeySequence>
#include <QLabel>
#include <QPlainTextEdit>
#include <QTest>

#include "editor/main_window_fixture.h"

namespace {

using Texts = std::vector<std::string>;

// The commands driven through the window's keys, on a loaded description.
class EditCommandsTest : public MainWindowFixture {
protected:
    EditCommandsTest() { start(fileTarget()); }

    void press(int key, Qt::KeyboardModifiers modifiers = Qt::ControlModifier) {
        QTest::keyClick(box(), static_cast<Qt::Key>(key), modifiers);
    }
    std::string selection() { return box()->textCursor().selectedText().toStdString(); }
    std::string counter() { return control<QLabel>("Label3")->text().toStdString(); }
};

TEST_F(EditCommandsTest, FindIgnoresCaseProposesTheSelectionAndSaysDoneAfterTheLastMatch) {
    form_.setText("one line\r\nsecond LiNe");
    form_.selectText(4, 4);
    prompter_.inputAnswers = {"LINE"};
    prompter_.answers = {Answer::Yes, Answer::Yes};
    press(Qt::Key_F);
    EXPECT_EQ(prompter_.inputs[0].proposed, "line");
    EXPECT_EQ(prompter_.inputs[0].title, "Find - Veskor");
    EXPECT_EQ(prompter_.texts(), (Texts{"Continue searching?", "Continue searching?", "Done."}));
    EXPECT_EQ(selection(), "LiNe");
}

TEST_F(EditCommandsTest, FindKeysStartFindWhateverShiftDoes) {
    for (QKeyCombination keys :
         {Qt::CTRL | Qt::SHIFT | Qt::Key_F, Qt::SHIFT | Qt::Key_F3, QKeyCombination(Qt::Key_F3)}) {
        SCOPED_TRACE(QKeySequence(keys).toString().toStdString());
        prompter_.inputs.clear();
        press(keys.key(), keys.keyboardModifiers());
        ASSERT_EQ(prompter_.inputs.size(), 1u);
        EXPECT_EQ(prompter_.inputs[0].prompt, "Enter search string:");
    }
}

TEST_F(EditCommandsTest, ReplaceAsksAtEachMatchAndSaysDoneOnlyAtTheEnd) {
    const std::string ask = "Replace? (Warning: cannot be undone)";
    const std::string remove = "Remove specified search string(s)?";
    const struct {
        const char* name;
        std::string text, find, replacement;
        const char* answers;  // Y, N or C at each question
        std::string result;
        Texts texts;
    } kCases[] = {
        {"a by aa in aaa", "aaa", "a", "aa", "YYY", "aaaaaa", {ask, ask, ask, "Done."}},
        {"Cancel keeps earlier ones", "a b a\r\na", "A", "x", "YNC", "x b a\r\na", {ask, ask, ask}},
        {"empty replacement", "a-b-c", "-", "", "YYY", "abc", {remove, ask, ask, "Done."}},
    };
    for (const auto& [name, text, find, replacement, answers, result, texts] : kCases) {
        SCOPED_TRACE(name);
        prompter_.shown.clear();
        prompter_.inputs.clear();
        form_.setText(text);
        prompter_.inputAnswers = {find, replacement};
        for (const char* letter = answers; *letter; ++letter)
            prompter_.answers.push_back(*letter == 'Y'   ? Answer::Yes
                                        : *letter == 'N' ? Answer::No
                                                         : Answer::Cancel);
        press(Qt::Key_H);
        EXPECT_EQ(form_.text(), result);
        EXPECT_EQ(prompter_.texts(), texts);
        EXPECT_EQ(prompter_.shown.back().title, "Replace - Veskor");
        EXPECT_EQ(prompter_.inputs.at(1).prompt, "Enter replacement string:");
    }
}

TEST_F(EditCommandsTest, CounterCountsBreaksAsTwoCharacters) {
    const struct {
        const char* name;
        std::string text;
        std::string expected;
    } kCases[] = {
        {"full multi-line box", std::string(14999, 'x') + "\r\n" + std::string(14999, 'y'),
         "0 characters remaining."},
        {"two lines", "abc\r\nde", "29993 characters remaining."},
        {"empty box", "", "Description is empty."}};
    for (const auto& [name, text, expected] : kCases) {
        SCOPED_TRACE(name);
        form_.setText(text);
        EXPECT_EQ(counter(), expected);
        EXPECT_EQ(form_.text(), text);
    }
}

TEST_F(EditCommandsTest, TypingBeyondTheLimitIsCut) {
    form_.setText(std::string(30000, 'x'));
    box()->moveCursor(QTextCursor::End);
    QTest::keyClicks(box(), QStringLiteral("yz"));
    EXPECT_EQ(form_.text(), std::string(30000, 'x'));
}

TEST_F(EditCommandsTest, CtrlKeyLeavesTheBoxReadOnlyUntilAPlainKey) {
    press(Qt::Key_A);
    EXPECT_TRUE(box()->isReadOnly());
    press(Qt::Key_Right, Qt::NoModifier);
    EXPECT_FALSE(box()->isReadOnly());
}

TEST_F(EditCommandsTest, ClipboardKeysKeepTheBoxsLineBreaks) {
    const struct {
        const char* name;
        const char* clipboard;  // nullptr: empty
        int selected;           // from the second character
        int key;
        std::string text;
        QString clipboardAfter;
    } kCases[] = {
        {"copy without a selection", "kept", 0, Qt::Key_C, "keep this", QStringLiteral("kept")},
        {"copy", "kept", 2, Qt::Key_C, "keep this", QStringLiteral("ee")},
        {"paste of nothing deletes", nullptr, 8, Qt::Key_V, "k", QString()},
        {"paste takes line breaks", "one\ntwo", 8, Qt::Key_V, "kone\r\ntwo",
         QStringLiteral("one\ntwo")},
    };
    for (const auto& [name, clipboard, selected, key, text, clipboardAfter] : kCases) {
        SCOPED_TRACE(name);
        QGuiApplication::clipboard()->setText(QString::fromLatin1(clipboard));
        form_.setText("keep this");
        form_.selectText(1, static_cast<std::size_t>(selected));
        press(key);
        EXPECT_EQ(form_.text(), text);
        EXPECT_EQ(QGuiApplication::clipboard()->text(), clipboardAfter);
    }
}

}  // namespace
