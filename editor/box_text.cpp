#include "editor/box_text.h"

std::string toProgramText(const QString& widgetText) {
    QString text = widgetText;
    text.replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
    text.replace(QLatin1Char('\n'), QStringLiteral("\r\n"));
    return text.toUtf8().toStdString();
}

QString toWidgetText(std::string_view programText) {
    QString text =
        QString::fromUtf8(programText.data(), static_cast<qsizetype>(programText.size()));
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    return text;
}

int widgetPosition(const QString& widgetText, std::size_t programPosition) {
    std::size_t counted = 0;
    qsizetype index = 0;
    while (index < widgetText.size() && counted < programPosition) {
        counted += widgetText[index] == QLatin1Char('\n') ? 2 : 1;
        index += widgetText[index].isHighSurrogate() && index + 1 < widgetText.size() ? 2 : 1;
    }
    return static_cast<int>(index);
}
