// The main window's fonts and colours: the design look, the theme colour that the
// options choose, the smaller sizes for high-DPI screens and the description box's
// font lists.
#include <QColor>
#include <QFont>
#include <QPalette>

#include "config/options_dialog.h"
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

QFont designFont(qreal points, bool bold = false, bool italic = false) {
    QFont font(QStringLiteral("Arial"));
    font.setPointSizeF(points);
    font.setBold(bold);
    font.setItalic(italic);
    return font;
}

constexpr qreal kWindowPoints = 9.75;

void setDesignFont(QWidget* widget, qreal points, bool bold = false, bool italic = false) {
    widget->setFont(designFont(points, bold, italic));
}

void setPointSize(QWidget* widget, int points) {
    QFont font = widget->font();
    font.setPointSize(points);
    widget->setFont(font);
}

}  // namespace

// Set before the controls exist, so that they are made with it: a font change lays
// out a text control's text again, and each new font costs a font engine.
void Form1::applyWindowFont() {
    setFont(windowFont());
}

QFont Form1::windowFont() {
    return designFont(kWindowPoints);
}

// The look the window has before the settings are read: Arial throughout, the yellow
// background, grey buttons, and the hand pointer over everything that can be clicked.
// The description box takes its font when the lists are filled (applyListFont).
void Form1::applyDesignLook() {
    setTextColour(ui->Text1, QColor(0, 0, 128));
    setDesignFont(ui->Text2, 9.75);
    for (QWidget* small : {static_cast<QWidget*>(ui->Combo1), static_cast<QWidget*>(ui->Combo2),
                           static_cast<QWidget*>(ui->Check1), static_cast<QWidget*>(ui->Label6),
                           static_cast<QWidget*>(ui->Label5)})
        setDesignFont(small, 8.25);
    setDesignFont(ui->Label3, 8.25, false, true);
    setDesignFont(ui->Label2, 9, true);
    setTextColour(ui->Label2, QColor(0x40, 0x40, 0x00));
    setDesignFont(ui->Label4, 9.75, false, true);
    setTextColour(ui->Label4, QColor(0, 128, 0));
    const QColor yellow(255, 255, 128), grey(0xE0, 0xE0, 0xE0);
    paint(this, yellow);
    for (QWidget* w : themedControls())
        paint(w, yellow);
    for (QWidget* w : shadedControls()) {
        paint(w, grey);
        w->setCursor(Qt::PointingHandCursor);
    }
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
    for (QWidget* w : {static_cast<QWidget*>(ui->Combo1), static_cast<QWidget*>(ui->Combo2),
                       static_cast<QWidget*>(ui->Text2), static_cast<QWidget*>(ui->Label3),
                       static_cast<QWidget*>(ui->Label6), static_cast<QWidget*>(ui->Check1),
                       static_cast<QWidget*>(ui->Label2)})
        setPointSize(w, reduced ? 6 : 8);
    setPointSize(ui->Label5, reduced ? 8 : 10);
    setPointSize(ui->Label4, reduced ? 6 : 11);
    for (QWidget* w : {ui->Command1, ui->Command2, ui->Command3, ui->Command4})
        setPointSize(w, reduced ? 8 : 10);
    m_options->adjustGUIforDPI(reduced);
    if (m_picker)
        m_picker->adjustGUIforDPI(reduced);
}

// The description box's bold Arial in the face and size that the lists show, set in
// one step rather than one change for the face and one for the size.
void Form1::applyListFont() {
    QFont font = designFont(kWindowPoints, true);
    if (ui->Combo1->currentIndex() >= 0)
        font.setFamily(ui->Combo1->currentText());
    if (const int points = ui->Combo2->currentText().trimmed().toInt(); points > 0)
        font.setPointSize(points);
    ui->Text1->setFont(font);
}

void Form1::Combo1_Click() {
    if (ui->Combo1->currentIndex() < 0)
        return;
    QFont font = ui->Text1->font();
    font.setFamily(ui->Combo1->currentText());
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
