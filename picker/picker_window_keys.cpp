// How the picker answers keys: the window sees each key first, then the control that
// has the focus; a focused list or path box stands out.
#include <QKeyEvent>

#include "config/desktop_controls.h"
#include "picker/picker_window.h"
#include "ui_picker_window.h"

namespace {

void setBold(QWidget* widget, bool bold) {
    QFont font = widget->font();
    font.setBold(bold);
    widget->setFont(font);
}

}  // namespace

bool Form2::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::KeyPress: {
            int key = static_cast<QKeyEvent*>(event)->key();
            bool handled = false;
            Form_KeyDown(key, handled);
            return handled || controlKeyDown(watched, key);
        }
        case QEvent::FocusIn:
            focusChanged(watched, true);
            break;
        case QEvent::FocusOut:
            focusChanged(watched, false);
            break;
        default:
            break;
    }
    return QWidget::eventFilter(watched, event);
}

void Form2::Form_KeyDown(int key, bool& handled) {
    handled = key == Qt::Key_Escape || key == Qt::Key_F1 || key == Qt::Key_F5 || key == Qt::Key_F12;
    if (!handled)
        return;
    // The window acts as if its drive list were not open.
    closeOpenList();
    switch (key) {
        case Qt::Key_Escape:
            Command2_Click();
            break;
        case Qt::Key_F1:
            Command3_Click();
            break;
        case Qt::Key_F5:
            refreshLists();
            break;
        case Qt::Key_F12:
            Command4_Click();
            break;
        default:
            break;
    }
}

bool Form2::controlKeyDown(QObject* watched, int key) {
    bool enter = key == Qt::Key_Return || key == Qt::Key_Enter;
    bool enterOrSpace = enter || key == Qt::Key_Space;
    if (watched == ui->Text1 && enter)
        Text1_KeyPress();
    else if (watched == ui->Dir1 && enterOrSpace)
        Dir1_KeyDown();
    else if (watched == ui->File1 && enterOrSpace)
        File1_KeyDown();
    else
        return enter && clickButton(watched);
    return true;
}

void Form2::focusChanged(QObject* watched, bool focused) {
    if (watched == ui->Text1) {
        QFont font = ui->Text1->font();
        font.setBold(focused);
        font.setPointSize(focused ? 12 : 10);
        ui->Text1->setFont(font);
    } else if (watched == ui->Drive1 || watched == ui->Dir1 || watched == ui->File1) {
        setBold(static_cast<QWidget*>(watched), focused);
    }
}
