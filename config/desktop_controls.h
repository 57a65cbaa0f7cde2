#pragma once

#include <QAccessible>
#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>

// How the program's buttons, drop-down lists and check boxes look and take keys, the
// same in every window.
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

// Key preview for a drop-down list: while the list is open its keys go to its pop-up,
// a window of its own, and `filter` sees them there first, as it sees the keys of the
// window's controls.
void previewListKeys(QComboBox* list, QObject* filter);

// Closes the drop-down list that is open, if any, so that a window key acts on the
// window with no list hanging over it.
void closeOpenList();

// Enter on a push button clicks it, as Space does. True when `watched` is one.
bool clickButton(QObject* watched);

// Screen readers take a plain widget for a filler inside another window: the program's
// windows say instead that they are a window or a dialog.
void declareWindowRole(QWidget* window, QAccessible::Role role);
// A drop-down list reads as its current entry; named, it reads as `name` with the entry
// as its value. Both are called before the window shows, since readers keep what they
// first learn of a widget.
void nameList(QComboBox* list, const QString& name);
