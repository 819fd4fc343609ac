#include "forms/main/NotesEdit.h"

#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QTextCursor>
#include <algorithm>

namespace rillbook {

NotesEdit::NotesEdit(QWidget* parent) : QPlainTextEdit(parent) {
    setTabChangesFocus(true);
}

// Input is cut before it reaches the document, so that undo knows nothing of what was left out.

void NotesEdit::keyPressEvent(QKeyEvent* event) {
    const QString text = event->text();
    const bool isCommand = (event->modifiers() & ~Qt::ShiftModifier) == Qt::ControlModifier;
    const bool inserts = !isCommand && !text.isEmpty() &&
                         (text.at(0).isPrint() || text.at(0).isSurrogate() || text.at(0) == u'\r');
    if (inserts && ThatFits(text) != text) {
        return;
    }
    QPlainTextEdit::keyPressEvent(event);
}

void NotesEdit::insertFromMimeData(const QMimeData* source) {
    QString text = source->text();
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    QMimeData fitting;
    fitting.setText(ThatFits(text));
    QPlainTextEdit::insertFromMimeData(&fitting);
}

void NotesEdit::inputMethodEvent(QInputMethodEvent* event) {
    event->setCommitString(ThatFits(event->commitString()), event->replacementStart(),
                           event->replacementLength());
    QPlainTextEdit::inputMethodEvent(event);
}

QString NotesEdit::ThatFits(QString text) const {
    const qsizetype kept = toPlainText().size() - textCursor().selectedText().size();
    text.truncate(std::max<qsizetype>(0, maxLength_ - kept));
    if (!text.isEmpty() && text.back().isHighSurrogate()) {
        text.chop(1);
    }
    return text;
}

}  // namespace rillbook
