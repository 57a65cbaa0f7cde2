#include "editor/edit_commands.h"

#include <gtest/gtest.h>

#include <QClipboard>
#include <QGuiApplication>
#include <QLabel>
#include <QPlainTextEdit>
#include <QTest>

#include "editor/main_window_fixture.h"

namespace {

// The commands driven through the window's keys, on a loaded description.
class EditCommandsTest : public MainWindowFixture {
protected:
    EditCommandsTest() { start(fileTarget()); }

    void press(int key, Qt::KeyboardModifiers modifiers = Qt::ControlModifier) {
        QTest::keyClick(box(), static_cast<Qt::Key>(key), modifiers);
    }
    std::string selection() const {
        return form_.findChild<QPlainTextEdit*>(QStringLiteral("Text1"))
            ->textCursor()
            .selectedText()
            .toStdString();
    }
    std::string counter() { return control<QLabel>("Label3")->text().toStdString(); }
    std::vector<std::string> titles() const {
        std::vector<std::string> out;
        for (const auto& shown : prompter_.shown)
            out.push_back(shown.title);
        return out;
    }
};

TEST_F(EditCommandsTest, FindIgnoresLetterCaseAndStopsAtNo) {
    form_.setText("abc ABC aBc abc");
    prompter_.inputAnswers = {"abc"};
    prompter_.answers = {Answer::Yes, Answer::Yes, Answer::No};
    press(Qt::Key_F);
    EXPECT_EQ(selection(), "aBc");
    EXPECT_EQ(prompter_.texts(), std::vector<std::string>(3, "Continue searching?"));
    EXPECT_EQ(prompter_.inputs[0].title, "Find - Veskor");
}

TEST_F(EditCommandsTest, FindKeysStartFindWhateverShiftDoes) {
    const struct {
        const char* name;
        int key;
        Qt::KeyboardModifiers modifiers;
    } kCases[] = {{"Ctrl+Shift+F", Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier},
                  {"Shift+F3", Qt::Key_F3, Qt::ShiftModifier},
                  {"F3", Qt::Key_F3, Qt::NoModifier}};
    for (const auto& [name, key, modifiers] : kCases) {
        SCOPED_TRACE(name);
        prompter_.inputs.clear();
        press(key, modifiers);
        ASSERT_EQ(prompter_.inputs.size(), 1u);
        EXPECT_EQ(prompter_.inputs[0].prompt, "Enter search string:");
    }
}

TEST_F(EditCommandsTest, FindProposesTheSelectionAndSaysDoneAfterTheLastMatch) {
    form_.setText("one line\r\nsecond line");
    form_.selectText(4, 4);
    prompter_.inputAnswers = {"LINE"};
    prompter_.answers = {Answer::Yes, Answer::Yes};
    press(Qt::Key_F);
    EXPECT_EQ(prompter_.inputs[0].proposed, "line");
    EXPECT_EQ(prompter_.texts(),
              (std::vector<std::string>{"Continue searching?", "Continue searching?", "Done."}));
    EXPECT_EQ(selection(), "line");
}

TEST_F(EditCommandsTest, ReplacingAByAaInAaaGivesSixLetters) {
    form_.setText("aaa");
    prompter_.inputAnswers = {"a", "aa"};
    prompter_.answers = {Answer::Yes, Answer::Yes, Answer::Yes};
    press(Qt::Key_H);
    EXPECT_EQ(form_.text(), "aaaaaa");
    EXPECT_EQ(prompter_.texts().back(), "Done.");
    EXPECT_EQ(titles().back(), "Replace - Veskor");
    EXPECT_EQ(prompter_.inputs[1].prompt, "Enter replacement string:");
}

TEST_F(EditCommandsTest, CancelAtAMatchKeepsEarlierReplacementsWithoutDone) {
    form_.setText("a b a\r\na");
    prompter_.inputAnswers = {"A", "x"};
    prompter_.answers = {Answer::Yes, Answer::No, Answer::Cancel};
    press(Qt::Key_H);
    EXPECT_EQ(form_.text(), "x b a\r\na");
    EXPECT_EQ(prompter_.texts(),
              std::vector<std::string>(3, "Replace? (Warning: cannot be undone)"));
}

TEST_F(EditCommandsTest, EmptyReplacementRemovesEveryMatchOnceAgreed) {
    form_.setText("a-b-c");
    prompter_.inputAnswers = {"-", ""};
    prompter_.answers = {Answer::Yes, Answer::Yes, Answer::Yes};
    press(Qt::Key_H);
    EXPECT_EQ(form_.text(), "abc");
    EXPECT_EQ(prompter_.texts().front(), "Remove specified search string(s)?");
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

TEST_F(EditCommandsTest, EditingMarksTheUpdateButtonBold) {
    EXPECT_FALSE(form_.updateBold());
    QTest::keyClicks(box(), QStringLiteral("x"));
    EXPECT_TRUE(form_.updateBold());
}

TEST_F(EditCommandsTest, CtrlKeyLeavesTheBoxReadOnlyUntilAPlainKey) {
    press(Qt::Key_A);
    EXPECT_TRUE(box()->isReadOnly());
    press(Qt::Key_Right, Qt::NoModifier);
    EXPECT_FALSE(box()->isReadOnly());
}

TEST_F(EditCommandsTest, CopyWithoutSelectionLeavesTheClipboard) {
    QGuiApplication::clipboard()->setText(QStringLiteral("kept"));
    form_.setText("text");
    press(Qt::Key_C);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("kept"));
    form_.selectText(1, 2);
    press(Qt::Key_C);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("ex"));
}

TEST_F(EditCommandsTest, PasteWithAnEmptyClipboardDeletesTheSelection) {
    QGuiApplication::clipboard()->clear();
    form_.setText("keep this");
    form_.selectText(4, 5);
    press(Qt::Key_V);
    EXPECT_EQ(form_.text(), "keep");
}

TEST_F(EditCommandsTest, PasteTakesLineBreaksIntoTheBox) {
    QGuiApplication::clipboard()->setText(QStringLiteral("one\ntwo"));
    form_.setText("");
    press(Qt::Key_V);
    EXPECT_EQ(form_.text(), "one\r\ntwo");
}

}  // namespace
