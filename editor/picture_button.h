#pragma once

#include <QAbstractButton>
#include <QPixmap>

// A picture that acts as a button: it draws its picture stretched over its whole
// place, as a scaled label would, and nothing else until the keyboard brings the focus
// to it; then a two-pixel frame marks it. Tab reaches it, the mouse does not give it
// the focus, and Space (or a click) presses it; screen readers see a push button.
class PictureButton : public QAbstractButton {
    Q_OBJECT

public:
    explicit PictureButton(QWidget* parent = nullptr);

    void setPixmap(const QPixmap& pixmap);
    QPixmap pixmap() const { return m_pixmap; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QPixmap m_pixmap;
};
