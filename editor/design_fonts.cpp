#include "editor/design_fonts.h"

#include <QFontInfo>
#include <QHash>

QFont designFont(qreal points, bool bold, bool italic) {
    QFont font(installedFace(QStringLiteral("Arial")));
    font.setPointSizeF(points);
    font.setBold(bold);
    font.setItalic(italic);
    return font;
}

QString installedFace(const QString& name) {
    static QHash<QString, QString> faces;
    auto found = faces.constFind(name);
    if (found == faces.constEnd()) {
        // Asked at the window's size, whose font the editor loads in any case.
        QFont font(name);
        font.setPointSizeF(kWindowPoints);
        found = faces.insert(name, QFontInfo(font).family());
    }
    return found.value();
}
