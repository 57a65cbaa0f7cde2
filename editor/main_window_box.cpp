// The description box's text as the program sees it: the conversion of its breaks,
// positions and selections, the 30000-character limit, and the clipboard and search
// commands of its keys.
#include <QClipboard>
#include <QGuiApplication>
#include <QScreen>
#include <QTextBlock>
#include <algorithm>

#include "editor/box_text.h"
#include "editor/edit_commands.h"
#include "editor/main_window.h"
#include "ui_main_window.h"

// A store command sees the whole of a text that was cut to fit the box for as long as
// the box holds what it was given, so that nothing the user did not see is lost.
std::string Form1::text() const {
    if (m_storeCommandRunning && m_wholeText && !ui->Text1->document()->isModified())
        return *m_wholeText;
    return toProgramText(ui->Text1->document()->toRawText());
}

// A text longer than the box takes is cut before the box shows it, so that the cut is
// not an edit that undo would bring back.
void Form1::setText(std::string_view text) {
    QString shown = toWidgetText(text);
    if (characterCount(text) <= kMaxDescriptionChars) {
        m_wholeText.reset();
        ui->Text1->setPlainText(shown);
        return;
    }
    m_wholeText = std::string(text);
    shown.truncate(widgetPosition(shown, kMaxDescriptionChars));
    ui->Text1->setPlainText(shown);
    ui->Text1->document()->setModified(false);
}

void Form1::selectText(std::size_t start, std::size_t length) {
    const QString widgetText =
        ui->Text1->document()->toRawText().replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
    QTextCursor cursor(ui->Text1->document());
    cursor.setPosition(widgetPosition(widgetText, start));
    cursor.setPosition(widgetPosition(widgetText, start + length), QTextCursor::KeepAnchor);
    ui->Text1->setTextCursor(cursor);
}

std::string Form1::selectedText() const {
    return toProgramText(ui->Text1->textCursor().selectedText());
}

// The box holds at most 30000 characters: what goes beyond is cut where it came in,
// just before the cursor, or at the end when the whole text was set at once.
void Form1::keepWithinMaxLength() {
    const std::size_t count = characterCount(text());
    if (count <= kMaxDescriptionChars)
        return;
    std::size_t excess = count - kMaxDescriptionChars;
    const QString widgetText = ui->Text1->document()->toRawText();
    QTextCursor cursor = ui->Text1->textCursor();
    int end = cursor.position() > 0 ? cursor.position() : static_cast<int>(widgetText.size());
    int start = end;
    while (start > 0 && excess > 0) {
        --start;
        const QChar c = widgetText[start];
        if (c.isLowSurrogate() && start > 0)
            --start;
        excess -= std::min<std::size_t>(excess, c == QChar::ParagraphSeparator ? 2 : 1);
    }
    cursor.setPosition(start);
    cursor.setPosition(end, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
}

void Form1::copySelection() {
    const QString selected = ui->Text1->textCursor().selectedText().replace(
        QChar::ParagraphSeparator, QLatin1Char('\n'));
    if (selected.isEmpty())
        return;
    QClipboard* clipboard = QGuiApplication::clipboard();
    clipboard->clear();
    clipboard->setText(selected);
}

void Form1::pasteClipboard() {
    // Other programs offer CR LF, LF or CR breaks: each is one break of the box.
    const QByteArray pasted = QGuiApplication::clipboard()->text().toUtf8();
    QTextCursor cursor = ui->Text1->textCursor();
    cursor.insertText(toWidgetText(std::string_view(pasted.constData(), pasted.size())));
    ui->Text1->setTextCursor(cursor);
}

void Form1::findInText(bool replace) {
    if (const QScreen* screen = this->screen())
        move(screen->availableGeometry().topLeft());
    const std::string selection = selectedText();
    if (replace)
        replaceCommand(*this, selection, m_prompter);
    else
        findCommand(*this, selection, m_prompter);
}
