#include "editor/toolbar.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>

namespace {

// The toolbar on bare widgets, so that each timer tick can be driven by hand.
class ToolbarTest : public ::testing::Test {
protected:
    ToolbarTest() {
        bar_->setText(Toolbar::shrinkCaption());
        toolbar_.Command5_Click();
        window_.show();
    }

    void tick(int times) {
        for (int i = 0; i < times; ++i)
            toolbar_.Timer1_Timer();
    }
    QColor barColour() const { return bar_->palette().color(QPalette::Button); }

    const QColor theme_{247, 247, 247}, shade_{237, 237, 237};
    QWidget window_;
    QPushButton* bar_ = new QPushButton(&window_);
    QLineEdit* targetBox_ = new QLineEdit(&window_);
    QLabel* banner_ = new QLabel(&window_);
    QPlainTextEdit* box_ = new QPlainTextEdit(&window_);
    QPushButton* member_ = new QPushButton(&window_);
    Toolbar toolbar_{{bar_, box_, targetBox_, banner_, {member_}, [this] { return theme_; }}};
};

TEST_F(ToolbarTest, HiddenToolbarFlashesAndShowsTheBannerFromTheSixteenthTickEvery121) {
    const struct {
        const char* name;
        int ticksSoFar;
        bool bannerShown, barShaded;
    } kCases[] = {{"15th tick", 15, false, true},
                  {"16th tick", 16, true, false},
                  {"21st tick", 21, false, true},
                  {"121st tick restarts", 121, false, true},
                  {"16th of the next round", 137, true, true}};
    int done = 0;
    for (const auto& [name, ticksSoFar, bannerShown, barShaded] : kCases) {
        SCOPED_TRACE(name);
        tick(ticksSoFar - done);
        done = ticksSoFar;
        EXPECT_EQ(banner_->isVisible(), bannerShown);
        EXPECT_EQ(targetBox_->isVisible(), !bannerShown);
        EXPECT_EQ(barColour(), barShaded ? shade_ : theme_);
    }
}

TEST_F(ToolbarTest, AClickedBannerNeverComesBackAndAShownToolbarStopsTheFlashing) {
    tick(16);
    toolbar_.disableBanner();
    EXPECT_TRUE(targetBox_->isVisible() && !banner_->isVisible());
    tick(121);  // the 16th tick of the next round
    EXPECT_FALSE(banner_->isVisible());
    EXPECT_EQ(barColour(), shade_);
    toolbar_.Command5_Click();
    tick(3);
    EXPECT_EQ(toolbar_.expandButtonFlashCntr(), 16);
}

}  // namespace
