#include "config/options_dialog.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QTest>

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

    TempDir folder_;
    SharedState state_;
    ScriptedPrompter prompter_;
    Form4 dialog_{state_, prompter_};
};

TEST_F(OptionsDialogTest, TheLongCaptionWrapsWithoutAHardBreak) {
    auto* check = control<QCheckBox>("Check2");
    EXPECT_EQ(check->text(), QStringLiteral("Create exported description files for target files "
                                            "on non-NTFS storage mediums"));
    EXPECT_EQ(inkedLines(check, check->rect().adjusted(20, 0, 0, 0)), 2);
}

}  // namespace
