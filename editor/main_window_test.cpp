#include "editor/main_window.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFontInfo>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QWindow>

#include "config/options_dialog.h"
#include "editor/main_window_fixture.h"
#include "picker/picker_window.h"

namespace {

using MainWindowTest = MainWindowFixture;

TEST_F(MainWindowTest, OpensInTheDesignFontsWithTheToolbarHiddenAndTwoTogglesComeBackExactly) {
    start(fileTarget());
    const std::pair<const char*, qreal> kSizes[] = {
        {"Command5", 9.75}, {"Combo1", 8},  {"Text2", 8},     {"Label2", 8},
        {"Label4", 11},     {"Label5", 10}, {"Command1", 10}, {"Text1", 8}};
    for (const auto& [name, points] : kSizes)
        EXPECT_EQ(control<QWidget>(name)->font().pointSizeF(), points) << name;
    EXPECT_TRUE(box()->font().bold());
    EXPECT_TRUE(control<QWidget>("Label2")->font().bold());
    EXPECT_TRUE(control<QWidget>("Label4")->font().italic());
    EXPECT_EQ(QFontInfo(control<QWidget>("Label3")->font()).family(),
              QFontInfo(QFont(QStringLiteral("Arial"))).family());

    auto* bar = control<QPushButton>("Command5");
    const auto expectToolbar = [&](bool shown, const QRect& boxPlace, const char* tip) {
        EXPECT_EQ(twips(box()), boxPlace);
        EXPECT_EQ(bar->toolTip().toStdString(), tip);
        for (const char* member : {"Combo1", "Combo2", "Label3", "Label6", "Command3", "Check1",
                                   "Command1", "Command2", "Command4"})
            EXPECT_EQ(control<QWidget>(member)->isHidden(), !shown) << member;
    };
    EXPECT_TRUE(bar->text().startsWith(QStringLiteral(">\n>\n>\n>\nE\nX\nP")));
    expectToolbar(false, QRect(360, 1080, 8175, 3975), "Click here to expand toolbar");
    QTest::mouseClick(bar, Qt::LeftButton);
    expectToolbar(true, QRect(1920, 1680, 6615, 3375), "Click here to shrink toolbar");
    QTest::mouseClick(bar, Qt::LeftButton);
    expectToolbar(false, QRect(360, 1080, 8175, 3975), "Click here to expand toolbar");
}

TEST_F(MainWindowTest, WithoutATargetThePickersChoiceIsLoadedAndItsEscEndsTheProgram) {
    const std::string target = fileTarget();
    start("");
    Form2* picker = form_.pickerWindow();
    ASSERT_NE(picker, nullptr);
    EXPECT_TRUE(picker->isVisible() && !form_.isVisible());
    auto* path = picker->findChild<QLineEdit*>(QStringLiteral("Text1"));
    path->setText(QString::fromStdString(target));
    QTest::keyClick(path, Qt::Key_Return);
    EXPECT_TRUE(!picker->isVisible() && form_.isVisible() && !form_.hasEnded());
    EXPECT_EQ(control<QLineEdit>("Text2")->text().toStdString(), target);
    EXPECT_EQ(state_.target.indexFile, files_.path() + "00_index.txt");

    MainWindowFixture cancelled;
    cancelled.start("");
    QTest::keyClick(cancelled.form_.pickerWindow(), Qt::Key_Escape);
    EXPECT_TRUE(cancelled.form_.hasEnded() && cancelled.form_.exitCode() == 0);
    EXPECT_FALSE(cancelled.form_.isVisible() || cancelled.form_.pickerWindow()->isVisible());
    EXPECT_TRUE(cancelled.prompter_.shown.empty());
}

// F10 and Esc with the toolbar hidden; key 0 is the window's close box.
TEST_F(MainWindowTest, EndingAsksOnlyAboutAModifiedDescription) {
    using enum Answer;
    const std::string question = "Description has been modified.  Save before exiting?";
    // name, typed, key, answers, asks, ends, saves
    const std::tuple<const char*, const char*, int, std::vector<Answer>, bool, bool, bool>
        kCases[] = {
            {"F10 saves", "changed", Qt::Key_F10, {}, false, true, true},
            {"Esc, Yes saves", "changed", Qt::Key_Escape, {Yes}, true, true, true},
            {"Esc, No ends", "changed", Qt::Key_Escape, {No}, true, true, false},
            {"Esc, Cancel edits on", "changed", Qt::Key_Escape, {Cancel}, true, false, false},
            {"unchanged, close box", "", 0, {}, false, true, false}};
    for (const auto& [name, typed, key, answers, asks, ends, saves] : kCases) {
        SCOPED_TRACE(name);
        MainWindowFixture run;
        run.start(run.fileTarget());
        QTest::keyClicks(run.box(), QString::fromLatin1(typed));
        run.prompter_.answers = {answers.begin(), answers.end()};
        if (key != 0)
            QTest::keyClick(run.box(), static_cast<Qt::Key>(key));
        else
            EXPECT_FALSE(run.form_.close());
        EXPECT_EQ(run.prompter_.texts(), asks ? std::vector{question} : std::vector<std::string>{});
        for (const auto& shown : run.prompter_.shown)
            EXPECT_EQ(shown.buttons, Buttons::YesNoCancel);
        EXPECT_EQ(run.form_.hasEnded(), ends);
        EXPECT_EQ(run.form_.exitCode(), 0);
        EXPECT_EQ(run.savedIndex(), saves ? "Plan.txt     changed\r\n" : "");
    }
}

// The window opens in the settings' high-DPI fonts and White, the options too when shown;
// Esc leaves the options unstored, OK stores them and paints the window in the Red chosen.
TEST_F(MainWindowTest, OpensInTheSettingsAndOnlyOkInTheOptionsStoresAndRepaints) {
    const auto expectColours = [&](const QColor& theme, const QColor& shade) {
        for (const char* label : {"Label2", "Label3", "Label4", "Label5", "Label6"})
            EXPECT_EQ(control<QWidget>(label)->palette().color(QPalette::Window), theme) << label;
        EXPECT_EQ(box()->palette().color(QPalette::Base), theme);
        for (const char* button : {"Command1", "Command2", "Command3", "Command4", "Command5",
                                   "Combo1", "Combo2", "Check1"})
            EXPECT_EQ(control<QWidget>(button)->palette().color(QPalette::Button), shade) << button;
    };
    writeSettings("[Veskor 1.9]\r\nHighDPIGUIAdjust=1\r\nDefaultGUIFontSize=4\r\nBgColor=4\r\n");
    start(fileTarget());
    EXPECT_EQ(control<QWidget>("Label4")->font().pointSize(), 6);
    EXPECT_EQ(control<QWidget>("Command1")->font().pointSize(), 8);
    EXPECT_EQ(box()->font().pointSize(), 20);
    EXPECT_TRUE(box()->font().bold());
    expectColours(QColor(247, 247, 247), QColor(237, 237, 237));
    Form4& options = form_.optionsDialog();
    auto* exportBox = options.findChild<QCheckBox*>(QStringLiteral("Check4"));
    QTest::keyClick(box(), Qt::Key_F12);
    EXPECT_EQ(options.findChild<QWidget*>(QStringLiteral("Check1"))->font().pointSize(), 6);
    EXPECT_EQ(options.findChild<QWidget*>(QStringLiteral("Command1"))->font().pointSize(), 8);
    exportBox->setChecked(true);
    QTest::keyClick(exportBox, Qt::Key_Escape);
    EXPECT_FALSE(options.isVisible());
    QTest::keyClick(box(), Qt::Key_F12);
    ASSERT_TRUE(options.isVisible());
    EXPECT_FALSE(exportBox->isChecked());
    exportBox->setChecked(true);
    options.findChild<QComboBox*>(QStringLiteral("Combo1"))->setCurrentIndex(2);
    options.findChild<QComboBox*>(QStringLiteral("Combo3"))->setCurrentIndex(3);
    QTest::mouseClick(options.findChild<QPushButton*>(QStringLiteral("Command1")), Qt::LeftButton);
    EXPECT_TRUE(control<QCheckBox>("Check1")->isChecked());
    expectColours(QColor(240, 64, 64), QColor(230, 54, 54));
    EXPECT_EQ(readFileBytes(configFile()),
              "[Veskor 1.9]\r\nCreate00index=1\r\nCreateExpDescNonNTFS=1\r\nDefaultGUIFont=2\r\n"
              "DefaultGUIFontSize=4\r\nHighDPIGUIAdjust=1\r\nAutoCreateExpDesc=1\r\nBgColor=3\r\n");
}

TEST_F(MainWindowTest, HelpWithoutItsFileOffersTheHomePageAndADeclinedDeleteKeepsTheText) {
    start(fileTarget());
    QTest::keyClick(box(), Qt::Key_F1);
    EXPECT_EQ(opened_, std::vector<std::string>{VESKOR_HOME_URL});
    form_.setText("worth keeping");
    prompter_.answers = {Answer::No};
    QTest::mouseClick(control<QWidget>("Image1"), Qt::LeftButton);
    EXPECT_EQ(prompter_.texts(), (std::vector<std::string>{
                                     "Error: Help file not found.  Check the Kelvane website for "
                                     "online help.",
                                     "Delete existing description?"}));
    EXPECT_EQ(form_.text(), "worth keeping");
    EXPECT_TRUE(form_.updateBold() && !form_.hasEnded());
}

// The buttons, lists, check box and expand bar show exactly the theme colour darkened
// by 10 in each channel, the options' colour list the theme colour, not the style's
// gradient of them; captions hold their words only and the control wraps them.
TEST_F(MainWindowTest, ControlsShowTheExactThemeColoursAndWrapTheirCaptions) {
    const std::tuple<const char*, QColor, QColor> kThemes[] = {
        {"BgColor=3", QColor(240, 64, 64), QColor(230, 54, 54)},
        {"BgColor=0", QColor(255, 255, 128), QColor(245, 245, 118)}};
    for (const auto& [setting, theme, shade] : kThemes) {
        SCOPED_TRACE(setting);
        MainWindowFixture run;
        run.writeSettings("[Veskor 1.9]\r\n" + std::string(setting) + "\r\n");
        run.start(run.fileTarget());
        QTest::mouseClick(run.control<QWidget>("Command5"), Qt::LeftButton);
        for (const char* name : {"Command1", "Command2", "Command3", "Command4", "Command5",
                                 "Combo1", "Combo2", "Check1"})
            EXPECT_EQ(dominantColour(run.control<QWidget>(name)), shade) << name;
        QTest::keyClick(run.box(), Qt::Key_F12);
        Form4& options = run.form_.optionsDialog();
        EXPECT_EQ(dominantColour(options.findChild<QWidget*>(QStringLiteral("Combo3"))), theme);
        for (auto* caption : {run.control<QCheckBox>("Check1"),
                              options.findChild<QCheckBox*>(QStringLiteral("Check2"))}) {
            EXPECT_FALSE(caption->text().contains(QLatin1Char('\n')));
            EXPECT_GT(captionRows(caption), caption->fontMetrics().height());
        }
    }
}

// The window sees its keys first, an open list's included (which they close); Enter
// on a button of the main window clicks it, while in the options it confirms them
// whatever has the focus, a button included.
TEST_F(MainWindowTest, WindowKeysWorkWhileAListIsOpenAndEnterConfirmsTheOptionsAnywhere) {
    start(fileTarget());
    QTest::mouseClick(control<QWidget>("Command5"), Qt::LeftButton);
    Form4& options = form_.optionsDialog();
    const auto optionsControl = [&](const char* name) {
        return options.findChild<QWidget*>(QString::fromLatin1(name));
    };
    // A key on the focused control, or on the list that it opens first.
    const auto press = [](QWidget* focused, Qt::Key key) {
        focused->setFocus();
        auto* list = qobject_cast<QComboBox*>(focused);
        if (list)
            list->showPopup();
        QWidget* popup = QApplication::activePopupWidget();
        ASSERT_EQ(popup != nullptr, list != nullptr);
        QTest::keyClick((list ? popup : focused->window())->windowHandle(), key);
        EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    };
    press(control<QWidget>("Combo2"), Qt::Key_F1);
    press(control<QWidget>("Combo1"), Qt::Key_F12);
    const std::size_t messagesBefore = prompter_.shown.size();
    for (const auto& [focused, key, stored] : {std::tuple{"Combo3", Qt::Key_Escape, 0},
                                               {"Command2", Qt::Key_Return, 1},
                                               {"Command4", Qt::Key_Enter, 1},
                                               {"Check4", Qt::Key_Enter, 1}}) {
        SCOPED_TRACE(focused);
        ASSERT_TRUE(options.isVisible());
        state_.options.optionsAutoCreateExpDesc = 0;
        static_cast<QCheckBox*>(optionsControl("Check4"))->setChecked(true);
        press(optionsControl(focused), key);
        EXPECT_FALSE(options.isVisible());
        EXPECT_EQ(state_.options.optionsAutoCreateExpDesc, stored);
        EXPECT_EQ(prompter_.shown.size(), messagesBefore);  // no reinstall question
        press(control<QWidget>("Command4"), Qt::Key_Return);
    }
    press(control<QWidget>("Command3"), Qt::Key_Return);
    EXPECT_EQ(opened_, std::vector<std::string>(2, VESKOR_HOME_URL));
    press(control<QWidget>("Combo2"), Qt::Key_Escape);
    EXPECT_TRUE(form_.hasEnded());
}

// A stored text longer than the box takes is cut for the box only: the user is told,
// an Update of the untouched box stores it whole, and storing an edited, shortened
// text needs a Yes.
TEST_F(MainWindowTest, AStoredTextTooLongForTheBoxIsCutVisiblyAndKeptUnlessTheUserAgrees) {
    const std::string whole = std::string(29995, 'a') + "the tail\r\n";
    // name, edits, answer, stores the whole, stores the box, ends
    const std::tuple<const char*, bool, Answer, bool, bool, bool> kCases[] = {
        {"untouched", false, Answer::Cancel, true, false, true},
        {"edited, No", true, Answer::No, false, false, false},
        {"edited, Yes", true, Answer::Yes, false, true, true}};
    for (const auto& [name, edits, answer, storesWhole, storesBox, ends] : kCases) {
        SCOPED_TRACE(name);
        MainWindowFixture run;
        run.files_.write("Plan.txt.description", whole);
        run.start(run.fileTarget());
        EXPECT_EQ(run.prompter_.texts(),
                  std::vector<std::string>{
                      "This description is longer than 30000 characters; the box shows its "
                      "first 30000.  Update keeps the whole text as long as you leave the box "
                      "unchanged."});
        EXPECT_EQ(run.box()->toPlainText().size(), 30000);
        if (edits) {
            run.form_.selectText(0, 1);
            QTest::keyClick(run.box(), Qt::Key_Delete);
        }
        run.prompter_.answers = {answer};
        QTest::keyClick(run.box(), Qt::Key_F10);
        const std::string saved = run.savedIndex();
        EXPECT_EQ(saved.find("the tail") != std::string::npos, storesWhole) << saved.size();
        EXPECT_EQ(saved.find("aaaaaaaaaa") != std::string::npos, storesWhole || storesBox);
        EXPECT_EQ(run.form_.hasEnded(), ends);
        EXPECT_EQ(run.prompter_.shown.size(), edits ? 2u : 1u);
    }
}

}  // namespace
