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
                    shown(title), shown(text), standardButtons(buttons),
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
    return answer.toUtf8().toStdString();
}
