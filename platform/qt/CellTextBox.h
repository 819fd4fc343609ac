#pragma once

#include <QPlainTextEdit>

namespace rillbook {

// The text box that a form lays over a grid's cell. It holds one line, which wraps where it is told
// to: line breaks that are pasted become blanks, as a break would part the cell's row in a copy of
// the grid.
class CellTextBox : public QPlainTextEdit {
    Q_OBJECT
public:
    explicit CellTextBox(QWidget* parent = nullptr);

    QString Text() const { return toPlainText(); }
    // The text cursor goes behind the text.
    void SetText(const QString& text);
    void SetWraps(bool wraps);

    // Nothing is selected and the text cursor is there.
    bool IsAtStart() const;
    bool IsAtEnd() const;

protected:
    void insertFromMimeData(const QMimeData* source) override;
};

}  // namespace rillbook
