#pragma once

#include <QPlainTextEdit>

namespace rillbook {

// A text box of several lines that takes no more than so many characters from the user, whether
// typed, pasted or dropped: what is beyond them is left out. A text that the program sets is taken
// whole. Tab moves the focus.
class NotesEdit : public QPlainTextEdit {
    Q_OBJECT
    Q_PROPERTY(int maxLength READ maxLength WRITE setMaxLength)
public:
    explicit NotesEdit(QWidget* parent = nullptr);

    // Named as those of QLineEdit, for the form.
    int maxLength() const { return maxLength_; }
    void setMaxLength(int characters) { maxLength_ = characters; }

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void insertFromMimeData(const QMimeData* source) override;
    void inputMethodEvent(QInputMethodEvent* event) override;

private:
    // The start of a text that would take the selection's place.
    QString ThatFits(QString text) const;

    int maxLength_ = 32767;
};

}  // namespace rillbook
