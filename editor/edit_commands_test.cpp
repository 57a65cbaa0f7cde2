#include "editor/edit_commands.h"

#include <gtest/gtest.h>

#include <QClipboard>
#include <QGuiApplication>
#include <QLabel>
#include <QMimeData>
#include <QTest>

#include "editor/main_window_fixture.h"

namespace {

using Texts = std::vector<std::string>;

// The commands driven through the window's keys, on a loaded description.
class EditCommandsTest : public MainWindowFixture {
protected:
    EditCommandsTest() { start(fileTarget()); }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::ControlModifier) {
        QTest::keyClick(box(), key, modifiers);
    }
};

TEST_F(EditCommandsTest, FindAndReplaceProposeTheSelectionAndSayDoneOnlyAfterTheLastMatch) {
    using enum Answer;
    form_.setText("one line\r\nsecond LiNe");
    form_.selectText(4, 4);
    prompter_.inputAnswers = {"LINE"};
    prompter_.answers = {Yes, Yes};
    press(Qt::Key_F);
    EXPECT_EQ(prompter_.inputs[0].proposed, "line");
    EXPECT_EQ(prompter_.inputs[0].title, "Find - Veskor");
    EXPECT_EQ(prompter_.texts(), (Texts{"Continue searching?", "Continue searching?", "Done."}));
    EXPECT_EQ(box()->textCursor().selectedText(), QStringLiteral("LiNe"));

    const std::string ask = "Replace? (Warning: cannot be undone)", done = "Done.";
    const std::string remove = "Remove specified search string(s)?";
    const struct {
        const char* name;
        std::string text, find, replacement, result;
        std::vector<Answer> answers;
        Texts texts;
    } kCases[] = {
        {"a by aa in aaa", "aaa", "a", "aa", "aaaaaa", {Yes, Yes, Yes}, {ask, ask, ask, done}},
        {"Cancel keeps one", "a\r\naa", "A", "b", "a\r\nba", {No, Yes, Cancel}, {ask, ask, ask}},
        {"empty replacement", "a-b", "-", "", "ab", {Yes, Yes}, {remove, ask, done}},
    };
    for (const auto& [name, text, find, replacement, result, answers, texts] : kCases) {
        SCOPED_TRACE(name);
        prompter_.shown.clear();
        form_.setText(text);
        prompter_.inputAnswers = {find, replacement};
        prompter_.answers = {answers.begin(), answers.end()};
        press(Qt::Key_H);
        EXPECT_EQ(form_.text(), result);
        EXPECT_EQ(prompter_.texts(), texts);
        EXPECT_EQ(prompter_.shown.back().title, "Replace - Veskor");
    }
}

TEST_F(EditCommandsTest, CounterCountsBreaksAsTwoCharactersUpToTheLimit) {
    const std::string full = std::string(14999, 'x') + "\r\n" + std::string(14999, 'y');
    form_.setText(full);
    EXPECT_EQ(control<QLabel>("Label3")->text(), QStringLiteral("0 characters remaining."));
    QTest::keyClick(box(), Qt::Key_Y);
    EXPECT_EQ(form_.text(), full);
    form_.setText("");
    EXPECT_EQ(control<QLabel>("Label3")->text(), QStringLiteral("Description is empty."));
}

// The box copies plain text alone, and takes the text alone of what a desktop program
// offers, one break for each CR LF, LF or CR.
TEST_F(EditCommandsTest, ClipboardCarriesPlainTextOnlyAndEachPastedBreakIsOneBreak) {
    form_.setText("one\r\ntwo");
    form_.selectText(1, 5);
    press(Qt::Key_C);
    EXPECT_EQ(QGuiApplication::clipboard()->mimeData()->formats(),
              QStringList{QStringLiteral("text/plain")});
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("ne\nt"));
    for (const char* pasted : {"1\r\n2\r\n3", "1\n2\n3", "1\r2\r3"}) {
        auto* offered = new QMimeData;
        offered->setText(QString::fromLatin1(pasted));
        offered->setHtml(QStringLiteral("<p>rich</p>"));
        QGuiApplication::clipboard()->setMimeData(offered);
        form_.setText("<>");
        form_.selectText(1, 0);
        press(Qt::Key_V);
        EXPECT_EQ(form_.text(), "<1\r\n2\r\n3>");
    }
    QGuiApplication::clipboard()->clear();
    form_.selectText(1, 3);
    press(Qt::Key_V);  // pasting nothing still deletes the selection
    EXPECT_EQ(form_.text(), "<2\r\n3>");
}

// After a Ctrl key the box refuses edits (cutting included) but its caret moves and
// selects with Ctrl held; a key without Ctrl edits again.
TEST_F(EditCommandsTest, CtrlLockRefusesEditsButNotMovingOrSelecting) {
    press(Qt::Key_A);
    QTest::keyClicks(box(), QStringLiteral("one two three"));
    press(Qt::Key_Home, Qt::NoModifier);
    for (const auto& [key, typed] :
         {std::pair{Qt::Key_Right, 'X'}, {Qt::Key_End, 'Y'}, {Qt::Key_Home, 'Z'}}) {
        press(key);
        QTest::keyClick(box(), typed);
    }
    EXPECT_EQ(form_.text(), "Zone Xtwo threeY");
    press(Qt::Key_Right, Qt::ControlModifier | Qt::ShiftModifier);
    press(Qt::Key_X);
    EXPECT_EQ(form_.text(), "Zone Xtwo threeY");
    press(Qt::Key_Backspace, Qt::NoModifier);
    EXPECT_EQ(form_.text(), "ZXtwo threeY");
}

}  // namespace
