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
    auto* colours = control<QComboBox>("Combo3");
    colours->setCurrentIndex(colours->findText(QStringLiteral("Red")));
    EXPECT_EQ(dialog_.themeColour(), QColor(240, 64, 64));
    QTest::mouseClick(control<QPushButton>("Command1"), Qt::LeftButton);

    EXPECT_EQ(readFileBytes(dir_ / "config.dat"),
              "[Veskor 1.9]\r\nCreate00index=0\r\nCreateExpDescNonNTFS=1\r\nDefaultGUIFont=2\r\n"
              "DefaultGUIFontSize=5\r\nHighDPIGUIAdjust=0\r\nAutoCreateExpDesc=1\r\nBgColor=3\r\n");
    ASSERT_EQ(exportTaken.count(), 1);
    EXPECT_TRUE(exportTaken.at(0).at(0).toBool());
    EXPECT_FALSE(dialog_.isVisible());
}

TEST_F(OptionsDialogTest, ASwitchOfTwoShowsClearedAndOkWritesZero) {
    state_.options.optionsCreateExpDescNonNTFS = 2;
    activate();
    EXPECT_FALSE(control<QCheckBox>("Check2")->isChecked());
    QTest::keyClick(control<QCheckBox>("Check2"), Qt::Key_Return);
    EXPECT_EQ(state_.options.optionsCreateExpDescNonNTFS, 0);
}

TEST_F(OptionsDialogTest, EscAndCloseOnlyHideAndReactivationShowsTheStoredSettings) {
    QSignalSpy restarted(&dialog_, &Form4::flashTimerRestartRequested);
    state_.options.optionsDefaultGUIFont = 12;  // out of range: the first font
    activate();
    EXPECT_EQ(control<QComboBox>("Combo1")->currentText(), QStringLiteral("Arial"));
    control<QCheckBox>("Check3")->setChecked(true);
    control<QComboBox>("Combo1")->setCurrentIndex(6);
    QTest::keyClick(control<QComboBox>("Combo1"), Qt::Key_Escape);
    EXPECT_FALSE(dialog_.isVisible());
    EXPECT_EQ(restarted.count(), 1);

    activate();
    EXPECT_FALSE(control<QCheckBox>("Check3")->isChecked());
    EXPECT_EQ(control<QComboBox>("Combo1")->currentText(), QStringLiteral("Arial"));
    EXPECT_FALSE(dialog_.close());
    EXPECT_FALSE(dialog_.isVisible());
    EXPECT_EQ(readFileBytes(dir_ / "config.dat"), "");
}

}  // namespace
