#pragma once

#include <QPlainTextEdit>

namespace rillbook {

// The text box over a grid's cell. Pasted line breaks and tabs become blanks, because a break would
// separate the cell's row in a copy of the grid.
class CellTextBox : public QPlainTextEdit {
    Q_OBJECT
public:
    explicit CellTextBox(QWidget* parent = nullptr);

    QString Text() const { return toPlainText(); }
    // The text cursor goes to the end of the text.
    void SetText(const QString& text);
    void SetWraps(bool wraps);

    // Nothing is selected and the text cursor is there.
    bool IsAtStart() const;
    bool IsAtEnd() const;

protected:
    void insertFromMimeData(const QMimeData* source) override;
};

}  // namespace rillbook
