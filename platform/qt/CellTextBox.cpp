#include "platform/qt/CellTextBox.h"

#include <QMimeData>

#include "platform/qt/FormFont.h"
#include "platform/text/CellText.h"

namespace rillbook {

CellTextBox::CellTextBox(QWidget* parent) : QPlainTextEdit(parent) {
    setFont(FormFont());
    setFrameShape(NoFrame);
    setTabChangesFocus(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    document()->setDocumentMargin(1);
    SetWraps(false);
}

void CellTextBox::SetText(const QString& text) {
    setPlainText(text);
    moveCursor(QTextCursor::End);
}

void CellTextBox::SetWraps(bool wraps) {
    setLineWrapMode(wraps ? WidgetWidth : NoWrap);
    setVerticalScrollBarPolicy(wraps ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);
}

bool CellTextBox::IsAtStart() const {
    return !textCursor().hasSelection() && textCursor().atStart();
}

bool CellTextBox::IsAtEnd() const {
    return !textCursor().hasSelection() && textCursor().atEnd();
}

void CellTextBox::insertFromMimeData(const QMimeData* source) {
    insertPlainText(OneLine(source->text()));
}

}  // namespace rillbook
