#pragma once

#include <QPlainTextEdit>

// The description box's widget: a plain text box whose copies (keys, menu, dragging,
// the selection that the desktop pastes with the middle button) carry plain text only,
// with "\n" breaks, since a description is plain text whatever the box draws it with.
class DescriptionBox : public QPlainTextEdit {
    Q_OBJECT

public:
    using QPlainTextEdit::QPlainTextEdit;

    // Locked, the box is read-only and refuses edits only: the caret still shows, moves
    // and selects with the keys, as in any text box that the user may not change.
    void setEditsLocked(bool locked);
    // View only, the box stays locked whatever keys go down in it.
    void setViewOnly(bool viewOnly);

protected:
    QMimeData* createMimeDataFromSelection() const override;

private:
    bool m_viewOnly = false;
};
