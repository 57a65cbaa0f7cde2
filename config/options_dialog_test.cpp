#include "config/options_dialog.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>
#include <QTest>
#include <QWindow>

#include "tests/scripted_prompter.h"
#include "tests/temp_dir.h"
#include "tests/widget_pixels.h"

namespace {

// The dialog on its own, shown, with its settings file in a temporary folder.
class OptionsDialogTest : public ::testing::Test {
protected:
    OptionsDialogTest() {
        state_.data.configFile = folder_ / "config.dat";
        dialog_.fillLists();
        dialog_.show();
    }
    template <typename T>
    T* control(const char* name) {
        return dialog_.findChild<T*>(QString::fromLatin1(name));
    }
    bool confirmed() const { return !readFileBytes(folder_ / "config.dat").empty(); }

    TempDir folder_;
    SharedState state_;
    ScriptedPrompter prompter_;
    Form4 dialog_{state_, prompter_};
};

// Enter confirms, unless a button has the focus: then it clicks that button.
TEST_F(OptionsDialogTest, EnterClicksTheFocusedButtonAndOtherwiseConfirms) {
    auto* cancel = control<QPushButton>("Command2");
    cancel->setFocus();
    QTest::keyClick(cancel, Qt::Key_Return);
    EXPECT_FALSE(dialog_.isVisible());
    EXPECT_FALSE(confirmed());
    dialog_.show();
    auto* check = control<QCheckBox>("Check1");
    check->setFocus();
    QTest::keyClick(check, Qt::Key_Enter);
    EXPECT_FALSE(dialog_.isVisible());
    EXPECT_TRUE(confirmed());
}

// Esc and Enter reach the dialog while one of its lists is open, and close the list.
TEST_F(OptionsDialogTest, EnterAndEscWorkWhileAListIsOpen) {
    for (const auto& [key, confirms] : {std::pair{Qt::Key_Escape, false}, {Qt::Key_Return, true}}) {
        dialog_.show();
        control<QComboBox>("Combo1")->showPopup();
        QWidget* popup = QApplication::activePopupWidget();
        ASSERT_NE(popup, nullptr);
        QTest::keyClick(popup->windowHandle(), key);
        EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
        EXPECT_FALSE(dialog_.isVisible());
        EXPECT_EQ(confirmed(), confirms);
    }
}

TEST_F(OptionsDialogTest, TheLongCaptionWrapsWithoutAHardBreak) {
    auto* check = control<QCheckBox>("Check2");
    EXPECT_EQ(check->text(), QStringLiteral("Create exported description files for target files "
                                            "on non-NTFS storage mediums"));
    EXPECT_EQ(inkedLines(check, check->rect().adjusted(20, 0, 0, 0)), 2);
}

}  // namespace
