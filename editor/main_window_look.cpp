// The main window's fonts and colours: the design look, the theme colour that the
// options choose, the smaller sizes for high-DPI screens and the description box's
// font lists.
#include <QColor>
#include <QFont>
#include <QPalette>
#include <array>

#include "config/options_dialog.h"
#include "editor/design_fonts.h"
#include "editor/main_window.h"
#include "picker/picker_window.h"
#include "ui_main_window.h"

namespace {

void paint(QWidget* widget, const QColor& colour) {
    QPalette palette = widget->palette();
    palette.setColor(QPalette::Window, colour);
    palette.setColor(QPalette::Base, colour);
    palette.setColor(QPalette::Button, colour);
    widget->setPalette(palette);
    widget->setAutoFillBackground(true);
}

void setTextColour(QWidget* widget, const QColor& colour) {
    QPalette palette = widget->palette();
    palette.setColor(QPalette::WindowText, colour);
    palette.setColor(QPalette::Text, colour);
    widget->setPalette(palette);
}

// A font change on a control that already has the size does nothing: no relayout.
void setPointSize(QWidget* widget, int points) {
    QFont font = widget->font();
    if (font.pointSizeF() == points)
        return;
    font.setPointSize(points);
    widget->setFont(font);
}

// The controls whose font size follows the high-DPI setting, with their style and
// their sizes in points at normal and at reduced size.
struct SizedControl {
    QWidget* control;
    int normal;
    int reduced;
    bool bold = false;
    bool italic = false;
};

constexpr int kControlPoints = 8;

std::array<SizedControl, 13> sizedControls(const Ui::Form1& ui) {
    return {{{ui.Combo1, kControlPoints, 6},
             {ui.Combo2, kControlPoints, 6},
             {ui.Text2, kControlPoints, 6},
             {ui.Label3, kControlPoints, 6, false, true},
             {ui.Label6, kControlPoints, 6},
             {ui.Check1, kControlPoints, 6},
             {ui.Label2, kControlPoints, 6, true},
             {ui.Label5, 10, 8},
             {ui.Label4, 11, 6, false, true},
             {ui.Command1, 10, 8},
             {ui.Command2, 10, 8},
             {ui.Command3, 10, 8},
             {ui.Command4, 10, 8}}};
}

}  // namespace

// The controls are made in the font most of them keep, Arial at 8 points, and only
// those that differ get a font of their own (applyDesignLook): a font change lays out
// a control's text again, and a list's first one builds its whole pop-up. The window
// font of the design, 9.75 points, is the expand bar's own and the application's.
void Form1::applyControlsFont() {
    setFont(designFont(kControlPoints));
}

QFont Form1::windowFont() {
    return designFont(kWindowPoints);
}

// The look the window has before the settings are read: Arial throughout, the text
// colours, and the hand pointer over everything that can be clicked. Start-up always
// sets the font sizes (adjustGUIforDPI) and paints the theme colour
// (applyBackgroundColor) before the window shows, so the controls are made at their
// normal sizes and take no background here: each font and palette is set once. The
// description box takes its font when the lists are filled (applyListFont).
void Form1::applyDesignLook() {
    for (const SizedControl& sized : sizedControls(*ui)) {
        const QFont font = designFont(sized.normal, sized.bold, sized.italic);
        if (font != sized.control->font())
            sized.control->setFont(font);
    }
    ui->Command5->setFont(windowFont());
    setTextColour(ui->Text1, QColor(0, 0, 128));
    setTextColour(ui->Label2, QColor(0x40, 0x40, 0x00));
    setTextColour(ui->Label4, QColor(0, 128, 0));
    for (QWidget* w : shadedControls())
        w->setCursor(Qt::PointingHandCursor);
    for (QWidget* w : {static_cast<QWidget*>(ui->Image1), static_cast<QWidget*>(ui->Image3),
                       static_cast<QWidget*>(ui->Image4), static_cast<QWidget*>(ui->Image5),
                       static_cast<QWidget*>(ui->Label4)})
        w->setCursor(Qt::PointingHandCursor);
}

void Form1::applyBackgroundColor() {
    const QColor theme = m_options->themeColour();
    const QColor shade(theme.red() - 10, theme.green() - 10, theme.blue() - 10);
    QPalette palette = this->palette();
    palette.setColor(QPalette::Window, theme);
    setPalette(palette);
    for (QWidget* w : themedControls())
        paint(w, theme);
    for (QWidget* w : shadedControls())
        paint(w, shade);
}

// The labels and text boxes, which take the theme colour itself.
std::vector<QWidget*> Form1::themedControls() const {
    return {ui->Label5, ui->Text2, ui->Label3, ui->Label6, ui->Text1, ui->Label2, ui->Label4};
}

// The buttons, lists and check box, which take the theme colour darkened by 0x0A0A0A.
std::vector<QWidget*> Form1::shadedControls() const {
    return {ui->Combo1, ui->Combo2,   ui->Command5, ui->Command3,
            ui->Check1, ui->Command1, ui->Command2, ui->Command4};
}

void Form1::adjustGUIforDPI() {
    const bool reduced = isOn(m_state.options.optionsHighDPIGUIAdjust);
    for (const SizedControl& sized : sizedControls(*ui))
        setPointSize(sized.control, reduced ? sized.reduced : sized.normal);
    m_options->adjustGUIforDPI(reduced);
    if (m_picker)
        m_picker->adjustGUIforDPI(reduced);
}

// The description box's bold Arial in the face and size that the lists show, set in
// one step rather than one change for the face and one for the size.
void Form1::applyListFont() {
    QFont font = designFont(kWindowPoints, true);
    if (ui->Combo1->currentIndex() >= 0)
        font.setFamily(installedFace(ui->Combo1->currentText()));
    if (const int points = ui->Combo2->currentText().trimmed().toInt(); points > 0)
        font.setPointSize(points);
    ui->Text1->setFont(font);
}

void Form1::Combo1_Click() {
    if (ui->Combo1->currentIndex() < 0)
        return;
    QFont font = ui->Text1->font();
    font.setFamily(installedFace(ui->Combo1->currentText()));
    ui->Text1->setFont(font);
}

void Form1::Combo2_Click() {
    const int points = ui->Combo2->currentText().trimmed().toInt();
    if (points <= 0)
        return;
    QFont font = ui->Text1->font();
    font.setPointSize(points);
    ui->Text1->setFont(font);
}
