#pragma once

#include <QColor>
#include <QString>
#include <functional>
#include <vector>

class QAbstractButton;
class QLabel;
class QWidget;

// The main window's hideable toolbar: the tall bar at the left edge (Command5) that
// switches between the toolbar shown and hidden, the description box's two places,
// and, while the toolbar is hidden, the flashing bar and the hint banner (Image5)
// that appears now and then over the target path box.
//
// The layout state is the bar's caption: a caption that starts with ">" offers to
// expand, so the toolbar is hidden. The window starts with the shrink caption and
// toggles once, so it opens with the toolbar hidden.
class Toolbar {
public:
    struct Controls {
        QAbstractButton* bar = nullptr;  // Command5
        QWidget* box = nullptr;          // Text1
        QWidget* targetBox = nullptr;    // Text2
        QLabel* banner = nullptr;        // Image5
        std::vector<QWidget*> members;   // hidden and shown with the toolbar
        std::function<QColor()> themeColour;
    };

    explicit Toolbar(Controls controls);

    static QString shrinkCaption();  // "<" x4, S H R I N K, "<" x4, one per line
    static QString expandCaption();  // ">" x4, E X P A N D, ">" x4, one per line

    bool isHidden() const;  // the bar's caption starts with ">"
    void Command5_Click();
    void Timer1_Timer();
    // The banner, clicked: it never comes back during this run.
    void disableBanner();
    bool bannerEnabled() const { return m_bannerEnabled; }
    short expandButtonFlashCntr() const { return m_expandButtonFlashCntr; }

private:
    void showToolbar();
    void hideToolbar();
    void showBanner();
    void hideBanner();
    QColor buttonShade() const;
    void paintBar(const QColor& colour);

    Controls m_controls;
    short m_expandButtonFlashCntr = 0;
    bool m_bannerEnabled = true;
};
