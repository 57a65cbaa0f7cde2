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

// The bar flashes on every tick, whatever the banner does.
TEST_F(ToolbarTest, HiddenToolbarFlashesAndShowsTheBannerFromTheSixteenthTickEvery121) {
    const QColor shade(0xED, 0xED, 0xED), theme(0xF7, 0xF7, 0xF7);
    const struct {
        const char* name;
        int ticksSoFar;
        bool bannerShown;
        QColor bar;
    } kCases[] = {{"15th tick", 15, false, shade},
                  {"16th tick", 16, true, theme},
                  {"20th tick", 20, true, theme},
                  {"21st tick", 21, false, shade},
                  {"121st tick restarts", 121, false, shade},
                  {"16th of the next round", 137, true, shade}};
    int done = 0;
    for (const auto& [name, ticksSoFar, bannerShown, bar] : kCases) {
        SCOPED_TRACE(name);
        tick(ticksSoFar - done);
        done = ticksSoFar;
        EXPECT_EQ(banner_->isVisible(), bannerShown);
        EXPECT_EQ(targetBox_->isVisible(), !bannerShown);
        EXPECT_EQ(barColour(), bar);
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

}  // namespace
