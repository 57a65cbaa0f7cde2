#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>

// How the program's buttons, drop-down lists and check boxes look, the same in every
// window.
//
// The flat controls are filled with exactly their palette's colour (Button; Base inside
// a check box's square) and framed by one line, where the desktop's style would shade
// the colour with gradients and lights: the theme colours that the user chooses show
// as chosen. Everything else (captions, the list's arrow, the pop-up, sizes) is the
// desktop style's. They draw themselves instead of taking a style of their own, since a
// list that changes style builds its pop-up at once, and the pop-ups are made only
// when first opened.

class FlatButton : public QPushButton {
    Q_OBJECT

public:
    using QPushButton::QPushButton;

protected:
    void paintEvent(QPaintEvent* event) override;
};

class FlatList : public QComboBox {
    Q_OBJECT

public:
    using QComboBox::QComboBox;

protected:
    void paintEvent(QPaintEvent* event) override;
};

// A flat check box whose caption wraps at the control's right edge, and which answers
// clicks on every line of it.
class FlatCheckBox : public QCheckBox {
    Q_OBJECT

public:
    using QCheckBox::QCheckBox;

protected:
    void paintEvent(QPaintEvent* event) override;
    bool hitButton(const QPoint& position) const override;
};
