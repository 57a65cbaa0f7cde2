// What screen readers meet in the picker: the names of its lists and of its path box,
// which have no caption of their own, and the depth of each folder in words.
#include <QListWidgetItem>

#include "config/desktop_controls.h"
#include "picker/picker_window.h"
#include "ui_picker_window.h"

void Form2::applyAccessibility() {
    declareWindowRole(this, QAccessible::Dialog);
    nameList(ui->Drive1, QStringLiteral("Drive"));
    ui->Dir1->setAccessibleName(QStringLiteral("Folders"));
    ui->File1->setAccessibleName(QStringLiteral("Files"));
    ui->File1->setAccessibleDescription(ui->Label1->text());
    ui->Text1->setAccessibleName(QStringLiteral("Path or pattern"));
}

void Form2::folderLevelForReaders(QListWidgetItem* item, const QString& name, qsizetype depth) {
    item->setData(Qt::AccessibleTextRole, name);
    item->setData(Qt::AccessibleDescriptionRole, QStringLiteral("Level %1").arg(depth + 1));
}
