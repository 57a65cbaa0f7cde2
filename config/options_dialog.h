#pragma once

#include <QColor>
#include <QWidget>
#include <memory>

#include "contracts/prompter.h"
#include "contracts/shared_state.h"

namespace Ui {
class Form4;
}

// Form4, the options dialog: the seven settings, shown without blocking its owner and
// only ever hidden, never destroyed. Every time it becomes the active window it shows
// the stored settings again, so changes that were not confirmed are dropped. OK stores
// the settings, writes config.dat and tells the main window what changed; Cancel,
// Esc and the close box only hide it.
//
// The colour list's background is the program's theme colour: the main window reads
// it from themeColour() whenever it paints.
class Form4 : public QWidget {
    Q_OBJECT

public:
    Form4(SharedState& state, Prompter& prompter, QWidget* parent = nullptr);
    ~Form4() override;

    // The three lists filled at start-up and set to the stored positions; setting the
    // colour list previews its colour, which makes it the theme colour.
    void fillLists();
    QColor themeColour() const;
    // The font sizes for high-DPI screens (reduced) or the normal ones; a hidden
    // dialog takes them when it is next shown.
    void adjustGUIforDPI(bool reduced);

signals:
    void flashTimerStopRequested();     // the dialog became active
    void flashTimerRestartRequested();  // every way out of the dialog
    void exportOptionTaken(bool checked);
    void backgroundColourTaken();  // repaint the main window with themeColour()
    void fontSizeOptionTaken();    // run the high-DPI adjustment everywhere
    void installHandlerRequested();
    void uninstallHandlerRequested();

protected:
    bool event(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void nameControls();
    void connectControls();
    void loadControls();
    void Combo3_Click();
    void Command1_Click();
    void Command2_Click();
    void takeSwitches();
    void applyFontSizes();

    std::unique_ptr<Ui::Form4> ui;
    SharedState& m_state;
    Prompter& m_prompter;
    bool m_reducedFontSizes = false;
    bool m_fontSizesDue = false;
};
