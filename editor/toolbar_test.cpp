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

    void tick(int times = 1) {
        for (int i = 0; i < times; ++i)
            toolbar_.Timer1_Timer();
    }

    QColor barColour() const { return bar_->palette().color(QPalette::Button); }

    QWidget window_;
    QPushButton* bar_ = new QPushButton(&window_);
    QPlainTextEdit* box_ = new QPlainTextEdit(&window_);
    QLineEdit* targetBox_ = new QLineEdit(&window_);
    QLabel* banner_ = new QLabel(&window_);
    QPushButton* member_ = new QPushButton(&window_);
    QColor theme_{247, 247, 247};
    Toolbar toolbar_{{bar_, box_, targetBox_, banner_, {member_}, [this] { return theme_; }}};
};

TEST_F(ToolbarTest, HiddenToolbarBarAlternatesBetweenThemeAndShade) {
    tick();
    EXPECT_EQ(barColour(), QColor(0xED, 0xED, 0xED));
    tick();
    EXPECT_EQ(barColour(), QColor(0xF7, 0xF7, 0xF7));
    tick();
    EXPECT_EQ(barColour(), QColor(0xED, 0xED, 0xED));
}

TEST_F(ToolbarTest, BannerShowsFromTheSixteenthToTheTwentiethTickAndEvery121) {
    const struct {
        const char* name;
        int ticksSoFar;
        bool bannerShown;
    } kCases[] = {{"15th tick", 15, false},
                  {"16th tick", 16, true},
                  {"20th tick", 20, true},
                  {"21st tick", 21, false},
                  {"121st tick restarts", 121, false},
                  {"16th of the next round", 137, true}};
    int done = 0;
    for (const auto& [name, ticksSoFar, bannerShown] : kCases) {
        SCOPED_TRACE(name);
        tick(ticksSoFar - done);
        done = ticksSoFar;
        EXPECT_EQ(banner_->isVisible(), bannerShown);
        EXPECT_EQ(targetBox_->isVisible(), !bannerShown);
    }
}

TEST_F(ToolbarTest, ClickedBannerNeverComesBackButTheBarKeepsFlashing) {
    tick(16);
    toolbar_.disableBanner();
    EXPECT_FALSE(banner_->isVisible());
    EXPECT_TRUE(targetBox_->isVisible());
    tick(121);
    EXPECT_FALSE(banner_->isVisible());
    EXPECT_EQ(barColour(), QColor(0xED, 0xED, 0xED));
}

TEST_F(ToolbarTest, ShowingTheToolbarHidesTheBannerAndStopsTheFlashing) {
    tick(17);
    toolbar_.Command5_Click();
    EXPECT_FALSE(banner_->isVisible());
    EXPECT_TRUE(targetBox_->isVisible());
    tick(3);
    EXPECT_EQ(barColour(), QColor(0xED, 0xED, 0xED));
    EXPECT_EQ(toolbar_.expandButtonFlashCntr(), 17);
}

TEST_F(ToolbarTest, CaptionsSpellTheWordOneLetterALine) {
    EXPECT_EQ(Toolbar::expandCaption(), QStringLiteral(">\n>\n>\n>\nE\nX\nP\nA\nN\nD\n>\n>\n>\n>"));
    EXPECT_EQ(Toolbar::shrinkCaption(), QStringLiteral("<\n<\n<\n<\nS\nH\nR\nI\nN\nK\n<\n<\n<\n<"));
}

}  // namespace
