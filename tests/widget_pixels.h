#pragma once

#include <QColor>
#include <QImage>
#include <QRect>
#include <QWidget>
#include <map>
#include <ostream>

// What a widget looks like on screen, read from a grab of it at one pixel per logical
// pixel.

// The colour that covers most of the widget: its background, for a control whose
// caption takes only a small part of it.
inline QColor dominantColour(QWidget* widget) {
    const QImage image = widget->grab().toImage().convertToFormat(QImage::Format_RGB32);
    std::map<QRgb, int> counts;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            ++counts[image.pixel(x, y)];
    QRgb most = 0;
    int mostCount = -1;
    for (const auto& [rgb, count] : counts)
        if (count > mostCount) {
            most = rgb;
            mostCount = count;
        }
    return QColor(most);
}

// How many separate bands of rows inside `area` hold ink, that is a pixel darker than
// the widget's background: the lines of a caption drawn there.
inline int inkedLines(QWidget* widget, const QRect& area) {
    const QImage image = widget->grab().toImage().convertToFormat(QImage::Format_RGB32);
    const int background = qGray(dominantColour(widget).rgb());
    int bands = 0;
    bool inBand = false;
    for (int y = area.top(); y <= area.bottom() && y < image.height(); ++y) {
        bool inked = false;
        for (int x = area.left(); x <= area.right() && x < image.width(); ++x)
            inked = inked || qGray(image.pixel(x, y)) < background - 96;
        bands += inked && !inBand;
        inBand = inked;
    }
    return bands;
}

// Failures print a colour as its red, green and blue.
inline void PrintTo(const QColor& colour, std::ostream* out) {
    *out << "(" << colour.red() << "," << colour.green() << "," << colour.blue() << ")";
}
