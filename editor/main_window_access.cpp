// What screen readers and the keyboard meet in the main window: the names of the
// controls whose captions are pictures or columns of letters, the description box's
// keys and its read-only view, the pictures that act as buttons, and the focus that
// comes back to the box after a question.
#include <QAccessible>

#include "config/desktop_controls.h"
#include "editor/main_window.h"
#include "editor/picture_button.h"
#include "ui_main_window.h"

namespace {

const QString kBoxKeys = QStringLiteral(
    "F10 stores the description, Esc cancels, F1 opens the help and F12 the options; "
    "F3 or Ctrl+F finds, Ctrl+H replaces; Tab moves on");

}  // namespace

void Form1::applyAccessibility() {
    declareWindowRole(this, QAccessible::Window);
    ui->Text1->setAccessibleName(QStringLiteral("Description"));
    ui->Text1->setAccessibleDescription(kBoxKeys);
    ui->Text2->setAccessibleName(QStringLiteral("File path"));
    nameList(ui->Combo1, QStringLiteral("Font"));
    nameList(ui->Combo2, QStringLiteral("Font size"));
    ui->Image1->setAccessibleName(QStringLiteral("Delete description"));
    ui->Image3->setAccessibleName(QStringLiteral("Open folder"));
    ui->Image4->setAccessibleName(QStringLiteral("Open file"));
    ui->Image5->setAccessibleName(QStringLiteral("Hint"));
    ui->Image5->setAccessibleDescription(
        QStringLiteral("Click the bar on the left for more options"));
    ui->Image2->setAccessibleName(QStringLiteral("Veskor"));
}

// The text of a target that is gone can be read and selected, never stored.
void Form1::markReadOnly() {
    ui->Text1->setViewOnly(true);
    ui->Text1->setAccessibleDescription(
        QStringLiteral("Read only: the file is gone, so this description cannot be stored. "
                       "Esc closes, F1 opens the help; F3 or Ctrl+F finds; Tab moves on"));
}

// A store command disables the box while it runs, which sends the focus on to the next
// control; the user goes on typing where they were.
void Form1::focusBoxAgain() {
    if (ui->Text1->isEnabled() && ui->Text1->isVisible())
        ui->Text1->setFocus(Qt::OtherFocusReason);
}

// Enter on a picture that acts as a button presses it, as Space does.
bool Form1::clickPicture(QObject* watched) {
    auto* picture = qobject_cast<PictureButton*>(watched);
    if (!picture)
        return false;
    picture->click();
    return true;
}
