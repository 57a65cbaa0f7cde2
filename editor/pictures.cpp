#include "editor/pictures.h"

#include <QFont>
#include <QPainter>
#include <QPainterPath>
#include <QPen>
#include <initializer_list>

#include "editor/design_fonts.h"

namespace {

// Outlines join and end sharp, as in the drawings these pictures were made from.
QPen outline(QRgb colour, qreal width, Qt::PenCapStyle cap = Qt::FlatCap,
             Qt::PenJoinStyle join = Qt::MiterJoin) {
    QPen pen(QColor(colour), width, Qt::SolidLine, cap, join);
    pen.setMiterLimit(4);
    return pen;
}

// A line through the points; closed, it also comes back to the first.
QPainterPath polyline(std::initializer_list<QPointF> points, bool closed = false) {
    QPainterPath path;
    for (const QPointF& point : points) {
        if (path.elementCount() == 0)
            path.moveTo(point);
        else
            path.lineTo(point);
    }
    if (closed)
        path.closeSubpath();
    return path;
}

// Separate straight strokes, each from its first point to its second.
QPainterPath strokes(std::initializer_list<QLineF> lines) {
    QPainterPath path;
    for (const QLineF& line : lines) {
        path.moveTo(line.p1());
        path.lineTo(line.p2());
    }
    return path;
}

void shape(QPainter& painter, const QPainterPath& path, const QPen& pen,
           const QBrush& fill = Qt::NoBrush) {
    painter.setPen(pen);
    painter.setBrush(fill);
    painter.drawPath(path);
}

// The text's left end sits on the baseline at `at`; the size is in pixels. The text is
// set in the window's own Arial at 8 points, scaled up or down: the window has that
// font already, while a face or size of the pictures' own would cost a font load of
// its own at start-up.
void label(QPainter& painter, QPointF at, qreal pixelSize, bool bold, QRgb colour,
           const QString& text) {
    constexpr int kPoints = 8;
    const qreal scale = pixelSize / (kPoints * painter.device()->logicalDpiY() / 72.0);
    painter.save();
    painter.translate(at);
    painter.scale(scale, scale);
    painter.setFont(designFont(kPoints, bold));
    painter.setPen(QColor(colour));
    painter.drawText(QPointF(0, 0), text);
    painter.restore();
}

// A sheet of paper with a luggage tag tied to its corner: a file and its note.
void drawAppIcon(QPainter& painter) {
    const QPen paper = outline(0x404000, 1.5);
    shape(painter, polyline({{5, 2}, {19, 2}, {26, 9}, {26, 30}, {5, 30}}, true), paper,
          QColor(0xfdfdf5));
    shape(painter, polyline({{19, 2}, {19, 9}, {26, 9}}), paper, QColor(0xe8e8c8));
    shape(painter, strokes({{9, 13, 21, 13}, {9, 17, 21, 17}, {9, 21, 17, 21}}),
          outline(0x000080, 1.6));
    shape(painter, polyline({{15, 22}, {24, 19}, {30, 25}, {21, 30}}, true), outline(0x806000, 1.2),
          QColor(0xffff80));
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x806000));
    painter.drawEllipse(QPointF(18.5, 24), 1.3, 1.3);
}

// A note crossed out: removes the description.
void drawDelete(QPainter& painter) {
    painter.setPen(outline(0x404000, 1.5));
    painter.setBrush(QColor(0xfdfdf5));
    painter.drawRoundedRect(QRectF(8, 4, 26, 24), 2, 2);
    shape(painter, strokes({{12, 11, 30, 11}, {12, 16, 30, 16}, {12, 21, 24, 21}}),
          outline(0x000080, 1.6));
    shape(painter, strokes({{30, 8, 44, 24}, {44, 8, 30, 24}}), outline(0xc00000, 4, Qt::RoundCap));
}

void drawLogo(QPainter& painter) {
    shape(painter, polyline({{4, 6}, {20, 6}, {25, 11}, {25, 29}, {4, 29}}, true),
          outline(0x404000, 1.5), QColor(0xfdfdf5));
    shape(painter, strokes({{8, 14, 20, 14}, {8, 18, 20, 18}, {8, 22, 17, 22}}),
          outline(0x000080, 1.4));
    label(painter, {31, 24}, 20, true, 0x000080, QStringLiteral("Veskor"));
}

// A page with an arrow out of it: opens the target file.
void drawOpenFile(QPainter& painter) {
    const QPen page = outline(0x404040, 1.3);
    shape(painter, polyline({{5, 2}, {17, 2}, {23, 8}, {23, 28}, {5, 28}}, true), page, Qt::white);
    shape(painter, polyline({{17, 2}, {17, 8}, {23, 8}}), page, QColor(0xe0e0e0));
    QPainterPath arrow = polyline({{10, 20}, {19, 11}});
    arrow.addPath(polyline({{13, 11}, {19, 11}, {19, 17}}));
    shape(painter, arrow, outline(0x008000, 2.2, Qt::RoundCap, Qt::RoundJoin));
}

// An open folder: opens the target folder in the file manager.
void drawOpenFolder(QPainter& painter) {
    const QPen edge = outline(0x604000, 1.3);
    shape(painter, polyline({{2, 7}, {11, 7}, {14, 10}, {26, 10}, {26, 25}, {2, 25}}, true), edge,
          QColor(0xe0b040));
    shape(painter, polyline({{2, 25}, {7, 14}, {29, 14}, {24, 25}}, true), edge, QColor(0xf8d870));
}

// A speech bubble with rounded corners, pointing down-left at the expand bar.
void drawBanner(QPainter& painter) {
    QPainterPath bubble;
    bubble.moveTo(14, 2);
    bubble.lineTo(297, 2);
    bubble.arcTo(QRectF(293, 2, 8, 8), 90, -90);
    bubble.lineTo(301, 30);
    bubble.arcTo(QRectF(293, 26, 8, 8), 0, -90);
    bubble.lineTo(26, 34);
    bubble.lineTo(10, 41);
    bubble.lineTo(16, 34);
    bubble.lineTo(14, 34);
    bubble.arcTo(QRectF(10, 26, 8, 8), 270, -90);
    bubble.lineTo(10, 6);
    bubble.arcTo(QRectF(10, 2, 8, 8), 180, -90);
    bubble.closeSubpath();
    shape(painter, bubble, outline(0x806000, 1.5), QColor(0xffffe8));
    label(painter, {22, 23}, 12.5, false, 0x000080,
          QStringLiteral("Click the bar on the left for more options"));
}

struct Drawing {
    QSize size;
    void (*draw)(QPainter&);
};

Drawing drawingOf(Picture which) {
    switch (which) {
        case Picture::AppIcon:
            return {{32, 32}, drawAppIcon};
        case Picture::Delete:
            return {{50, 32}, drawDelete};
        case Picture::Logo:
            return {{116, 33}, drawLogo};
        case Picture::OpenFile:
            return {{30, 30}, drawOpenFile};
        case Picture::OpenFolder:
            return {{30, 30}, drawOpenFolder};
        case Picture::Banner:
            break;
    }
    return {{303, 42}, drawBanner};
}

}  // namespace

QPixmap drawPicture(Picture which, qreal devicePixelRatio) {
    const Drawing drawing = drawingOf(which);
    QPixmap pixmap(drawing.size * devicePixelRatio);
    pixmap.setDevicePixelRatio(devicePixelRatio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    drawing.draw(painter);
    return pixmap;
}
