#include "editor/description_box.h"

#include <QMimeData>
#include <QTextCursor>

void DescriptionBox::setEditsLocked(bool locked) {
    setReadOnly(locked);
    if (locked)
        setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
}

QMimeData* DescriptionBox::createMimeDataFromSelection() const {
    auto* plain = new QMimeData;
    plain->setText(
        textCursor().selectedText().replace(QChar::ParagraphSeparator, QLatin1Char('\n')));
    return plain;
}
