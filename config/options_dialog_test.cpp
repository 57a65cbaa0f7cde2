#include "config/options_dialog.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include "tests/scripted_prompter.h"
#include "tests/temp_dir.h"

namespace {

class OptionsDialogTest : public ::testing::Test {
protected:
    OptionsDialogTest() {
        state_.data.configFile = dir_ / "config.dat";
        dialog_.fillLists();
    }

    template <typename T>
    T* control(const char* name) {
        T* found = dialog_.findChild<T*>(QString::fromLatin1(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }

    // What the user sees on bringing the dialog to the front.
    void activate() {
        dialog_.show();
        QEvent activation(QEvent::WindowActivate);
        QApplication::sendEvent(&dialog_, &activation);
    }

    void chooseColour(const char* name) {
        QComboBox* colours = control<QComboBox>("Combo3");
        colours->setCurrentIndex(colours->findText(QString::fromLatin1(name)));
    }

    void click(const char* name) { QTest::mouseClick(control<QPushButton>(name), Qt::LeftButton); }

    TempDir dir_;
    SharedState state_;
    ScriptedPrompter prompter_;
    Form4 dialog_{state_, prompter_};
};

TEST_F(OptionsDialogTest, OkStoresTheSettingsInConfigFileAndTicksTheExportBox) {
    QSignalSpy exportTaken(&dialog_, &Form4::exportOptionTaken);
    activate();
    control<QCheckBox>("Check1")->setChecked(false);
    control<QCheckBox>("Check4")->setChecked(true);
    control<QComboBox>("Combo1")->setCurrentIndex(2);
    control<QComboBox>("Combo2")->setCurrentIndex(5);
    chooseColour("Red");
    click("Command1");

    EXPECT_EQ(readFileBytes(dir_ / "config.dat"),
              "[Veskor 1.9]\r\nCreate00index=0\r\nCreateExpDescNonNTFS=1\r\nDefaultGUIFont=2\r\n"
              "DefaultGUIFontSize=5\r\nHighDPIGUIAdjust=0\r\nAutoCreateExpDesc=1\r\nBgColor=3\r\n");
    ASSERT_EQ(exportTaken.count(), 1);
    EXPECT_EQ(exportTaken.at(0).at(0).toBool(), true);
    EXPECT_FALSE(dialog_.isVisible());
    EXPECT_EQ(dialog_.windowTitle(), QStringLiteral("Veskor - Options"));
}

TEST_F(OptionsDialogTest, ASwitchOfTwoShowsClearedAndOkWritesZero) {
    state_.options.optionsCreateExpDescNonNTFS = 2;
    activate();
    EXPECT_FALSE(control<QCheckBox>("Check2")->isChecked());
    QTest::keyClick(control<QCheckBox>("Check2"), Qt::Key_Return);
    EXPECT_EQ(state_.options.optionsCreateExpDescNonNTFS, 0);
}

TEST_F(OptionsDialogTest, ReactivationShowsTheStoredSettingsNotTheCancelledOnes) {
    QSignalSpy restarted(&dialog_, &Form4::flashTimerRestartRequested);
    activate();
    control<QCheckBox>("Check3")->setChecked(true);
    control<QComboBox>("Combo1")->setCurrentIndex(6);
    QTest::keyClick(control<QComboBox>("Combo1"), Qt::Key_Escape);
    EXPECT_FALSE(dialog_.isVisible());
    EXPECT_EQ(restarted.count(), 1);

    activate();
    EXPECT_FALSE(control<QCheckBox>("Check3")->isChecked());
    EXPECT_EQ(control<QComboBox>("Combo1")->currentIndex(), 0);
    EXPECT_EQ(readFileBytes(dir_ / "config.dat"), "");
}

TEST_F(OptionsDialogTest, ColourListPreviewsTheChosenColourAsTheTheme) {
    const struct {
        const char* name;
        QColor expected;
    } kCases[] = {{"Red", QColor(240, 64, 64)},
                  {"White", QColor(247, 247, 247)},
                  {"Blue", QColor(112, 160, 240)}};
    for (const auto& [name, expected] : kCases) {
        SCOPED_TRACE(name);
        chooseColour(name);
        EXPECT_EQ(dialog_.themeColour(), expected);
    }
}

TEST_F(OptionsDialogTest, ClosingOnlyHidesTheDialog) {
    activate();
    EXPECT_FALSE(dialog_.close());
    EXPECT_FALSE(dialog_.isVisible());
    EXPECT_EQ(readFileBytes(dir_ / "config.dat"), "");
}

TEST_F(OptionsDialogTest, AnOutOfRangeFontSettingSelectsTheFirstFont) {
    state_.options.optionsDefaultGUIFont = 12;
    activate();
    EXPECT_EQ(control<QComboBox>("Combo1")->currentText(), QStringLiteral("Arial"));
}

}  // namespace
