#include "editor/qt_prompter.h"

#include <QApplication>
#include <QInputDialog>
#include <QMessageBox>
#include <QString>

namespace {

QString shown(std::string_view text) {
    QString result = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    return result.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
}

// An answer goes back with CR LF breaks, so that a proposed text that held a break
// still matches the text it came from.
std::string answered(QString text) {
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    text.replace(QLatin1Char('\n'), QStringLiteral("\r\n"));
    return text.toUtf8().toStdString();
}

// A box is as wide as its longest unbreakable run of characters: a long path would run
// off the screen. Zero-width spaces let such a run wrap anywhere without showing.
QString wrappable(const QString& text) {
    constexpr qsizetype kLongestRun = 40;
    QString result;
    qsizetype run = 0;
    for (const QChar c : text) {
        run = c.isSpace() ? 0 : run + 1;
        if (run > kLongestRun && !c.isLowSurrogate())
            result += QChar(0x200B);
        result += c;
    }
    return result;
}

QMessageBox::StandardButtons standardButtons(Buttons buttons) {
    switch (buttons) {
        case Buttons::YesNo:
            return QMessageBox::Yes | QMessageBox::No;
        case Buttons::YesNoCancel:
            return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
        case Buttons::Ok:
            break;
    }
    return QMessageBox::Ok;
}

Answer answerFor(QMessageBox::StandardButton button) {
    switch (button) {
        case QMessageBox::Ok:
            return Answer::Ok;
        case QMessageBox::Yes:
            return Answer::Yes;
        case QMessageBox::No:
            return Answer::No;
        default:
            return Answer::Cancel;
    }
}

}  // namespace

Answer QtPrompter::message(std::string_view text, std::string_view title, Buttons buttons,
                           Icon icon) {
    QMessageBox box(icon == Icon::Critical ? QMessageBox::Critical : QMessageBox::NoIcon,
                    shown(title), wrappable(shown(text)), standardButtons(buttons),
                    QApplication::activeWindow());
    box.exec();
    QAbstractButton* clicked = box.clickedButton();
    return clicked ? answerFor(box.standardButton(clicked)) : Answer::Cancel;
}

std::optional<std::string> QtPrompter::input(std::string_view prompt, std::string_view title,
                                             std::string_view proposed) {
    bool accepted = false;
    const QString answer =
        QInputDialog::getText(QApplication::activeWindow(), shown(title), shown(prompt),
                              QLineEdit::Normal, shown(proposed), &accepted);
    if (!accepted)
        return std::nullopt;
    return answered(answer);
}
