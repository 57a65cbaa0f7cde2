// How the main window answers keys and clicks: the window's own keys first, then the
// control that has the focus.
#include <QKeyEvent>
#include <QMouseEvent>
#include <algorithm>
#include <array>

#include "config/desktop_controls.h"
#include "editor/box_text.h"
#include "editor/description_box.h"
#include "editor/edit_commands.h"
#include "editor/main_window.h"
#include "ui_main_window.h"

namespace {

bool isEnter(int key) {
    return key == Qt::Key_Return || key == Qt::Key_Enter;
}

}  // namespace

bool Form1::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        auto* key = static_cast<QKeyEvent*>(event);
        // The window's own keys stop here, so that they do not come back to the
        // window when the control passes them on.
        const bool windowKey = Form_KeyDown(key);
        if (m_ended)
            return true;
        if (watched == ui->Text1)
            Text1_KeyDown(key);
        else if (watched == ui->Combo1)
            Combo1_Click();
        else if (watched == ui->Combo2)
            Combo2_Click();
        else if (!windowKey && isEnter(key->key()))
            return clickButton(watched) || clickPicture(watched);
        return windowKey || m_ended;
    }
    if (event->type() == QEvent::MouseButtonRelease)
        return clickable(watched, event);
    return QWidget::eventFilter(watched, event);
}

void Form1::keyPressEvent(QKeyEvent* event) {
    if (!Form_KeyDown(event))
        QWidget::keyPressEvent(event);
}

bool Form1::Form_KeyDown(QKeyEvent* event) {
    constexpr std::array kWindowKeys{Qt::Key_F1, Qt::Key_Escape, Qt::Key_F10, Qt::Key_F12};
    if (std::ranges::find(kWindowKeys, event->key()) == kWindowKeys.end())
        return false;
    // The window acts as if no list of it were open.
    closeOpenList();
    switch (event->key()) {
        case Qt::Key_F1:
            Command3_Click();
            return true;
        case Qt::Key_Escape:
            Command2_Click();
            return true;
        case Qt::Key_F10:
            if (ui->Command1->isEnabled())
                Command1_Click();
            return true;
        case Qt::Key_F12:
            Command4_Click();
            return true;
        default:
            return false;
    }
}

// After a Ctrl combination the box stays read-only until a key without Ctrl goes
// down in it, so the mouse cannot edit in between.
void Form1::Text1_KeyDown(QKeyEvent* event) {
    ui->Text1->setEditsLocked(event->modifiers().testFlag(Qt::ControlModifier));
    switch (boxCommandFor(event->key(), event->modifiers())) {
        case BoxCommand::Copy:
            copySelection();
            break;
        case BoxCommand::Paste:
            pasteClipboard();
            break;
        case BoxCommand::SelectAll:
            selectText(0, characterCount(text()));
            break;
        case BoxCommand::Find:
            findInText(false);
            break;
        case BoxCommand::Replace:
            findInText(true);
            break;
        case BoxCommand::None:
            break;
    }
}

bool Form1::clickable(QObject* watched, QEvent* event) {
    if (static_cast<QMouseEvent*>(event)->button() != Qt::LeftButton)
        return false;
    if (watched == ui->Image5)
        Image5_Click();
    else if (watched == ui->Label4)
        Label4_Click();
    else
        return false;
    return true;
}

void Form1::Text1_Change() {
    keepWithinMaxLength();
    if (m_readingState) {
        setUpdateBold(false);
        setUpdateEnabled(false);
    }
    if (!ui->Command1->isEnabled())
        return;
    setUpdateBold(true);
    ui->Label3->setText(toWidgetText(counterText(text())));
}
