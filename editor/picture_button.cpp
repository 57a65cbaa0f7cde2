#include "editor/picture_button.h"

#include <QPainter>

PictureButton::PictureButton(QWidget* parent) : QAbstractButton(parent) {
    setFocusPolicy(Qt::TabFocus);
}

void PictureButton::setPixmap(const QPixmap& pixmap) {
    m_pixmap = pixmap;
    update();
}

void PictureButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    if (!m_pixmap.isNull())
        painter.drawPixmap(rect(), m_pixmap);
    if (!hasFocus())
        return;
    painter.setPen(QPen(palette().color(QPalette::WindowText), 2, Qt::SolidLine, Qt::SquareCap,
                        Qt::MiterJoin));
    painter.drawRect(QRectF(rect()).adjusted(1, 1, -1, -1));
}
