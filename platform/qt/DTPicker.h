#pragma once

#include <QLineEdit>
#include <QPointer>
#include <QTimer>
#include <optional>

#include "platform/text/DateTime.h"
#include "platform/text/PickerText.h"

class QFrame;
class QLabel;
class QToolButton;

namespace rillbook {

class UpDown;

// A picker of a date, or of a date and time, with a drop-down calendar.
//
// It is a line edit with a parser for the whole text, not a section edit: a section edit gives each
// typed character a separate meaning, moves on when a section is full, and moves on again at the
// separator that the user types next, so that a date typed as it is shown becomes another date.
//
// Left, Right and a click select a section of the shown text; Up, Down, the wheel and the spin
// buttons step it. What is typed or pasted replaces the section as long as it fits into it; as soon
// as it does not (a second number, a separator), it replaces the whole text. After that, and after
// any other edit, the text is edited as in any line edit. PickerFormat reads the text.
//
// Enter, the loss of the focus, a step and the calendar take the text. A text that is not a date
// is refused: the former date is shown again, with a message at the picker. Esc takes the former
// date back, and closes the window only if nothing was typed.
class DTPicker : public QLineEdit {
    Q_OBJECT
public:
    explicit DTPicker(QWidget* parent = nullptr);
    ~DTPicker() override;

    // The date that was last taken or set, not a text that is being typed. A midnight, unless the
    // format shows the time. Seconds that the format does not show are those that SetValue brought;
    // they are 0 after another time was chosen or a whole text was typed.
    DateTime Value() const;
    // The date that the text means now, also while it is being typed; nothing if it is not a date.
    std::optional<DateTime> Meant() const;
    // Years outside 1801 to 9999 become the nearest moment inside. Drops a text that is being
    // typed.
    void SetValue(DateTime value);
    // A pattern of PickerFormat. One without a day has spin buttons in place of the calendar and
    // leaves the day as SetValue set it.
    void SetCustomFormat(const QString& pattern);

    // For a command that acts on the date: takes the text. False if a text was refused, now or
    // since the last call, and not replaced after that; the message is shown (again), the picker
    // has the focus, and the command must do nothing. So no command acts on a former date that the
    // user may not have noticed.
    [[nodiscard]] bool Settle();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    // Meant has changed.
    void Change();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    bool HasSections() const { return !shown_.sections.empty(); }
    void ShowValue();
    void NoteSelection();
    void FollowEdit(const QString& text);
    bool EditSection(const QString& before);
    void TypeWhole(const QString& text);
    bool Take();
    void Refuse();
    void ShowRefusal();
    void HideRefusal();
    void Announce();
    void Step(int by);
    bool MoveToSection(int key);
    void SelectSection(int index);
    void SelectSectionAt(const QPoint& position);
    void ShowCalendar();
    void ChooseDay(QDate day);

    PickerFormat format_;
    PickerValue value_;
    std::optional<DateTime> announced_;

    PickerText shown_;        // the text after the last edit; its sections while they are known
    int section_ = -1;        // the one that is selected or being typed into, or -1
    qsizetype selected_ = 0;  // the selection of `shown_` before an edit, from here
    qsizetype selectedTo_ = 0;
    bool isTouched_ = false;  // edited since it was shown
    bool isWhole_ = false;    // the former text was replaced as a whole
    QPoint pressed_;

    bool isRefused_ = false;  // as Settle reports it
    QString refusal_;
    QLabel* notice_;
    QTimer noticeTimer_;

    QToolButton* drop_;
    UpDown* spin_;
    QPointer<QFrame> calendar_;
};

}  // namespace rillbook
