#include "editor/description_box.h"

#include <QMimeData>
#include <QTextCursor>

void DescriptionBox::setEditsLocked(bool locked) {
    locked = locked || m_viewOnly;
    setReadOnly(locked);
    if (locked)
        setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
}

void DescriptionBox::setViewOnly(bool viewOnly) {
    m_viewOnly = viewOnly;
    setEditsLocked(viewOnly);
}

QMimeData* DescriptionBox::createMimeDataFromSelection() const {
    auto* plain = new QMimeData;
    plain->setText(
        textCursor().selectedText().replace(QChar::ParagraphSeparator, QLatin1Char('\n')));
    return plain;
}
