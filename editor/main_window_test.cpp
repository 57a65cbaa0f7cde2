#include "editor/main_window.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>

#include "config/options_dialog.h"
#include "editor/main_window_fixture.h"
#include "picker/picker_window.h"

namespace {

using MainWindowTest = MainWindowFixture;

TEST_F(MainWindowTest, OpensWithTheToolbarHiddenAndTwoTogglesComeBackExactly) {
    start(fileTarget());
    auto* bar = control<QPushButton>("Command5");
    EXPECT_TRUE(bar->text().startsWith(QStringLiteral(">\n>\n>\n>\nE\nX\nP")));
    EXPECT_EQ(bar->toolTip(), QStringLiteral("Click here to expand toolbar"));
    EXPECT_EQ(twips(control<QWidget>("Text1")), QRect(360, 1080, 8175, 3975));
    EXPECT_TRUE(control<QWidget>("Command1")->isHidden());

    QTest::mouseClick(bar, Qt::LeftButton);
    EXPECT_EQ(twips(control<QWidget>("Text1")), QRect(1920, 1680, 6615, 3375));
    EXPECT_EQ(bar->toolTip(), QStringLiteral("Click here to shrink toolbar"));
    for (const char* member : {"Combo1", "Combo2", "Label3", "Label6", "Command3", "Check1",
                               "Command1", "Command2", "Command4"})
        EXPECT_FALSE(control<QWidget>(member)->isHidden()) << member;

    QTest::mouseClick(bar, Qt::LeftButton);
    QTest::mouseClick(bar, Qt::LeftButton);
    QTest::mouseClick(bar, Qt::LeftButton);
    EXPECT_EQ(twips(control<QWidget>("Text1")), QRect(360, 1080, 8175, 3975));
    EXPECT_TRUE(control<QWidget>("Check1")->isHidden());
}

TEST_F(MainWindowTest, WithoutATargetThePickersChoiceIsLoaded) {
    const std::string target = fileTarget();
    start("");
    Form2* picker = form_.pickerWindow();
    ASSERT_NE(picker, nullptr);
    EXPECT_TRUE(picker->isVisible());
    EXPECT_FALSE(form_.isVisible());

    auto* path = picker->findChild<QLineEdit*>(QStringLiteral("Text1"));
    path->setText(QString::fromStdString(target));
    QTest::keyClick(path, Qt::Key_Return);
    EXPECT_FALSE(picker->isVisible());
    EXPECT_TRUE(form_.isVisible());
    EXPECT_FALSE(form_.hasEnded());
    EXPECT_EQ(control<QLineEdit>("Text2")->text().toStdString(), target);
    EXPECT_EQ(state_.target.indexFile, files_.path() + "00_index.txt");
}

TEST_F(MainWindowTest, CancellingThePickerEndsWithoutAWindow) {
    start("");
    QTest::keyClick(form_.pickerWindow(), Qt::Key_Escape);
    EXPECT_TRUE(form_.hasEnded());
    EXPECT_EQ(form_.exitCode(), 0);
    EXPECT_FALSE(form_.isVisible());
    EXPECT_FALSE(form_.pickerWindow()->isVisible());
    EXPECT_TRUE(prompter_.shown.empty());
}

TEST_F(MainWindowTest, F10SavesWhileTheToolbarIsHidden) {
    start(fileTarget());
    QTest::keyClicks(box(), QStringLiteral("new words"));
    QTest::keyClick(box(), Qt::Key_F10);
    EXPECT_TRUE(form_.hasEnded());
    EXPECT_EQ(form_.exitCode(), 0);
}

TEST_F(MainWindowTest, CancelAsksAboutAModifiedDescription) {
    const struct {
        const char* name;
        Answer answer;
        bool ends;
    } kCases[] = {{"Yes saves and ends", Answer::Yes, true},
                  {"No ends without saving", Answer::No, true},
                  {"Cancel keeps editing", Answer::Cancel, false}};
    for (const auto& [name, answer, ends] : kCases) {
        SCOPED_TRACE(name);
        MainWindowFixture run;
        run.start(run.fileTarget());
        QTest::keyClicks(run.box(), QStringLiteral("changed"));
        run.prompter_.answers = {answer};
        QTest::keyClick(run.box(), Qt::Key_Escape);
        ASSERT_FALSE(run.prompter_.shown.empty());
        EXPECT_EQ(run.prompter_.shown[0].text,
                  "Description has been modified.  Save before exiting?");
        EXPECT_EQ(run.prompter_.shown[0].buttons, Buttons::YesNoCancel);
        EXPECT_EQ(run.prompter_.shown[0].icon, Icon::None);
        EXPECT_EQ(run.form_.hasEnded(), ends);
    }
}

TEST_F(MainWindowTest, ClosingAnUnchangedDescriptionEndsWithoutAQuestion) {
    start(fileTarget());
    EXPECT_FALSE(form_.close());
    EXPECT_TRUE(form_.hasEnded());
    EXPECT_TRUE(prompter_.shown.empty());
}

TEST_F(MainWindowTest, EscInTheReadingStateOfAMissingTargetEndsWithoutAQuestion) {
    files_.write("Gone.txt.description", "kept words\r\nsecond line\r\n");
    start(files_ / "Gone.txt");
    ASSERT_TRUE(form_.inReadingState());
    EXPECT_EQ(form_.text(), "kept words\r\nsecond line\r\n");
    EXPECT_TRUE(control<QWidget>("Check1")->isHidden());
    QTest::keyClicks(box(), QStringLiteral("typed"));
    EXPECT_FALSE(control<QPushButton>("Command1")->font().bold());

    QTest::keyClick(box(), Qt::Key_Escape);
    EXPECT_TRUE(form_.hasEnded());
    EXPECT_EQ(prompter_.texts(), std::vector<std::string>{"Error: file not found.\r\n\"" +
                                                          (files_ / "Gone.txt") + "\""});
}

TEST_F(MainWindowTest, BackgroundColourPaintsLabelsAndShadesButtons) {
    const struct {
        const char* name;
        int position;
        QColor theme, shade;
    } kCases[] = {{"Red", 3, QColor(240, 64, 64), QColor(230, 54, 54)},
                  {"White", 4, QColor(247, 247, 247), QColor(237, 237, 237)}};
    for (const auto& [name, position, theme, shade] : kCases) {
        SCOPED_TRACE(name);
        MainWindowFixture run;
        run.writeSettings("[Veskor 1.9]\r\nBgColor=" + std::to_string(position) + "\r\n");
        run.start(run.fileTarget());
        for (const char* label : {"Label2", "Label3", "Label4", "Label5", "Label6"})
            EXPECT_EQ(run.control<QWidget>(label)->palette().color(QPalette::Window), theme)
                << label;
        EXPECT_EQ(run.box()->palette().color(QPalette::Base), theme);
        for (const char* button : {"Command1", "Command2", "Command3", "Command4", "Command5",
                                   "Combo1", "Combo2", "Check1"})
            EXPECT_EQ(run.control<QWidget>(button)->palette().color(QPalette::Button), shade)
                << button;
    }
}

TEST_F(MainWindowTest, OptionsOkWritesConfigAndTicksTheExportBox) {
    start(fileTarget());
    QTest::keyClick(box(), Qt::Key_F12);
    Form4& options = form_.optionsDialog();
    ASSERT_TRUE(options.isVisible());
    options.findChild<QCheckBox*>(QStringLiteral("Check4"))->setChecked(true);
    options.findChild<QComboBox*>(QStringLiteral("Combo3"))->setCurrentIndex(3);
    QTest::mouseClick(options.findChild<QPushButton*>(QStringLiteral("Command1")), Qt::LeftButton);

    EXPECT_TRUE(control<QCheckBox>("Check1")->isChecked());
    EXPECT_EQ(control<QWidget>("Label6")->palette().color(QPalette::Window), QColor(240, 64, 64));
    EXPECT_EQ(readFileBytes(configFile()),
              "[Veskor 1.9]\r\nCreate00index=1\r\nCreateExpDescNonNTFS=1\r\nDefaultGUIFont=0\r\n"
              "DefaultGUIFontSize=0\r\nHighDPIGUIAdjust=0\r\nAutoCreateExpDesc=1\r\nBgColor=3\r\n");
}

TEST_F(MainWindowTest, HighDpiSettingLowersTheButtonsAndLabels) {
    writeSettings("[Veskor 1.9]\r\nHighDPIGUIAdjust=1\r\nDefaultGUIFontSize=5\r\n");
    start(fileTarget());
    EXPECT_EQ(control<QWidget>("Command1")->font().pointSize(), 8);
    EXPECT_EQ(control<QWidget>("Label6")->font().pointSize(), 6);
    EXPECT_EQ(control<QWidget>("Label5")->font().pointSize(), 8);
    EXPECT_EQ(box()->font().pointSize(), 24);
}

TEST_F(MainWindowTest, HelpOpensTheHelpFileOrTheHomePage) {
    start(fileTarget());
    QTest::keyClick(box(), Qt::Key_F1);
    EXPECT_EQ(prompter_.texts(), std::vector<std::string>{"Error: Help file not found.  Check "
                                                          "the Kelvane website for online help."});
    ASSERT_EQ(opened_.size(), 1u);
    EXPECT_EQ(opened_[0].rfind("https://", 0), 0u);

    const std::string help = program_.write("help.html", "<html></html>");
    QTest::mouseClick(control<QPushButton>("Command3"), Qt::LeftButton);
    EXPECT_EQ(opened_.back(), help);
}

TEST_F(MainWindowTest, LinkOpensTheHomePage) {
    start(fileTarget());
    QTest::mouseClick(control<QWidget>("Label4"), Qt::LeftButton);
    ASSERT_EQ(opened_.size(), 1u);
    EXPECT_EQ(opened_[0], control<QLabel>("Label4")->text().toStdString());
}

TEST_F(MainWindowTest, FontListsChangeOnlyTheDescriptionBox) {
    start(fileTarget());
    QTest::mouseClick(control<QPushButton>("Command5"), Qt::LeftButton);
    control<QComboBox>("Combo2")->setCurrentIndex(5);
    control<QComboBox>("Combo1")->setCurrentIndex(1);
    EXPECT_EQ(box()->font().pointSize(), 24);
    EXPECT_EQ(box()->font().family(), QStringLiteral("Courier"));
    EXPECT_NE(control<QWidget>("Combo2")->font().pointSize(), 24);
}

TEST_F(MainWindowTest, DeleteIconAnsweredNoBringsTheTextBackStillModified) {
    start(fileTarget());
    form_.setText("worth keeping");
    prompter_.answers = {Answer::No};
    QTest::mouseClick(control<QWidget>("Image1"), Qt::LeftButton);
    EXPECT_EQ(prompter_.texts(), std::vector<std::string>{"Delete existing description?"});
    EXPECT_EQ(form_.text(), "worth keeping");
    EXPECT_TRUE(form_.updateBold());
    EXPECT_FALSE(control<QWidget>("Image1")->isHidden());
    EXPECT_FALSE(form_.hasEnded());
}

TEST_F(MainWindowTest, OpenIconOpensTheTarget) {
    const std::string target = fileTarget();
    start(target);
    ASSERT_TRUE(control<QWidget>("Image3")->isHidden());
    QTest::mouseClick(control<QWidget>("Image4"), Qt::LeftButton);
    EXPECT_EQ(opened_, std::vector<std::string>{target});
}

TEST_F(MainWindowTest, VersionLabelNamesTheProgramVersion) {
    start(fileTarget());
    EXPECT_TRUE(control<QLabel>("Label2")->text().startsWith(QStringLiteral("Version ")));
}

}  // namespace
