#include "platform/qt/DTPicker.h"

#include <QAccessible>
#include <QApplication>
#include <QCalendarWidget>
#include <QKeyEvent>
#include <QLabel>
#include <QScreen>
#include <QStyle>
#include <QToolButton>
#include <QToolTip>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <algorithm>
#include <cstdlib>
#include <utility>

#include "platform/qt/UpDown.h"

namespace rillbook {

namespace {

constexpr int kButtonWidth = 20;
constexpr int kNoticeMilliseconds = 10000;
constexpr qsizetype kLongestQuote = 40;

QDate CalendarDayOf(DateTime moment) {
    const CalendarDate parts = DateParts(moment);
    return {parts.year, parts.month, parts.day};
}

// What an edit put in the place of before[from, to); nothing if it changed more than that.
std::optional<QString> Replacement(const QString& before, qsizetype from, qsizetype to,
                                   const QString& after) {
    const qsizetype kept = before.size() - to;  // after the edit
    if (after.size() < from + kept || !after.startsWith(QStringView(before).left(from)) ||
        !after.endsWith(QStringView(before).right(kept))) {
        return std::nullopt;
    }
    return after.mid(from, after.size() - kept - from);
}

// On the screen of the widget, under it or above it.
QPoint PlaceBeside(const QWidget& widget, const QSize& size) {
    const QRect screen = widget.screen()->availableGeometry();
    const QPoint under = widget.mapToGlobal(widget.rect().bottomLeft());
    const QPoint above = widget.mapToGlobal(widget.rect().topLeft()) - QPoint(0, size.height());
    const bool fits = under.y() + size.height() <= screen.bottom();
    const int right = std::max(screen.left(), screen.right() - size.width());
    return {std::clamp(under.x(), screen.left(), right), fits ? under.y() : above.y()};
}

}  // namespace

DTPicker::DTPicker(QWidget* parent)
    : QLineEdit(parent),
      format_(u"MMM dd, yyyy"),
      notice_(new QLabel(this, Qt::ToolTip)),
      drop_(new QToolButton(this)),
      spin_(new UpDown(this)) {
    notice_->setObjectName(QStringLiteral("notice"));
    notice_->setPalette(QToolTip::palette());
    notice_->setFrameStyle(QFrame::Box);
    notice_->setMargin(3);
    notice_->setTextFormat(Qt::PlainText);
    notice_->hide();
    noticeTimer_.setSingleShot(true);
    connect(&noticeTimer_, &QTimer::timeout, this, &DTPicker::HideRefusal);

    drop_->setObjectName(QStringLiteral("calendar"));
    drop_->setArrowType(Qt::DownArrow);
    drop_->setFocusPolicy(Qt::NoFocus);
    drop_->setCursor(Qt::ArrowCursor);
    drop_->setAccessibleName(QStringLiteral("Calendar"));
    connect(drop_, &QToolButton::clicked, this, &DTPicker::ShowCalendar);
    spin_->setObjectName(QStringLiteral("spin"));
    spin_->setCursor(Qt::ArrowCursor);
    connect(spin_, &UpDown::Pressed, this, [this](int direction) {
        setFocus();
        Step(direction);
    });

    connect(this, &QLineEdit::textEdited, this, &DTPicker::FollowEdit);
    connect(this, &QLineEdit::selectionChanged, this, &DTPicker::NoteSelection);
    connect(this, &QLineEdit::cursorPositionChanged, this, &DTPicker::NoteSelection);
    SetCustomFormat(QStringLiteral("MMM dd, yyyy"));
}

DTPicker::~DTPicker() = default;

DateTime DTPicker::Value() const {
    return format_.ShowsTime() ? value_.moment : DayOf(value_.moment);
}

std::optional<DateTime> DTPicker::Meant() const {
    if (!isTouched_) {
        return Value();
    }
    return format_.Read(text(), value_, isWhole_ ? Typed::Whole : Typed::Within);
}

void DTPicker::SetValue(DateTime value) {
    const DateTime held = HeldInPickerYears(value);
    value_ = {held, held};
    isRefused_ = false;
    HideRefusal();
    ShowValue();
    Announce();
}

void DTPicker::SetCustomFormat(const QString& pattern) {
    format_ = PickerFormat(pattern);
    drop_->setVisible(format_.ShowsDay());
    spin_->setVisible(!format_.ShowsDay());
    updateGeometry();
    ShowValue();
    Announce();
}

bool DTPicker::Settle() {
    Take();
    if (!isRefused_) {
        return true;
    }
    isRefused_ = false;
    setFocus();
    selectAll();
    ShowRefusal();
    return false;
}

QSize DTPicker::sizeHint() const {
    // Room for the longest text that a user would type for it.
    const QString widest =
        format_.Show(DateSerial(2000, 12, 28) + 0.99).text + QStringLiteral("0000");
    const QSize base = QLineEdit::sizeHint();
    return {fontMetrics().horizontalAdvance(widest) + kButtonWidth + 2 * base.height() / 3,
            base.height()};
}

QSize DTPicker::minimumSizeHint() const {
    return sizeHint();
}

// The text of the value, untouched.
void DTPicker::ShowValue() {
    shown_ = format_.Show(value_.moment);
    section_ = -1;
    isTouched_ = false;
    isWhole_ = false;
    setText(shown_.text);
    if (hasFocus()) {
        selectAll();
    }
    NoteSelection();
}

// Only a text that is followed: during an edit the signals still have the selection before it.
void DTPicker::NoteSelection() {
    if (text() == shown_.text) {
        selected_ = hasSelectedText() ? selectionStart() : cursorPosition();
        selectedTo_ = selected_ + selectedText().size();
    }
}

void DTPicker::FollowEdit(const QString& text) {
    isRefused_ = false;
    HideRefusal();
    const bool isFirst = !std::exchange(isTouched_, true);
    const QString before = std::exchange(shown_.text, text);
    const bool replacesAll = selected_ == 0 && selectedTo_ == before.size();
    const auto inserted = Replacement(before, selected_, selectedTo_, text);
    if (text.isEmpty() || replacesAll) {
        TypeWhole(text);
    } else if (isFirst && selected_ == selectedTo_ && inserted) {
        TypeWhole(*inserted);  // the user never puts a bare caret into the shown text
    } else if (!EditSection(before)) {
        // A whole date that was pasted or dropped into another text is that date.
        const bool isDate = inserted && inserted->size() > 1 &&
                            format_.Read(*inserted, value_, Typed::Whole).has_value();
        shown_.sections.clear();
        section_ = -1;
        if (isDate) {
            TypeWhole(*inserted);
        }
    }
    NoteSelection();
    Announce();
}

// Follows an edit within the current section; false if there is none, or if more was edited.
bool DTPicker::EditSection(const QString& before) {
    if (section_ < 0) {
        return false;
    }
    const auto current = shown_.sections.begin() + section_;
    const auto typed =
        Replacement(before, current->start, current->start + current->length, shown_.text);
    if (!typed) {
        return false;
    }
    if (!typed->isEmpty() && !FitsSection(current->field, *typed)) {
        TypeWhole(*typed);
        return true;
    }
    const qsizetype growth = typed->size() - current->length;
    current->length += growth;
    std::for_each(current + 1, shown_.sections.end(),
                  [growth](PickerSection& later) { later.start += growth; });
    return true;
}

// The text replaces the former one.
void DTPicker::TypeWhole(const QString& text) {
    shown_ = {text, {}};
    section_ = -1;
    isWhole_ = true;
    if (QLineEdit::text() != text) {
        setText(text);
    }
}

// Makes a text that was typed the value; false if it is refused.
bool DTPicker::Take() {
    if (!isTouched_) {
        return true;
    }
    const std::optional<DateTime> meant = Meant();
    if (!meant) {
        Refuse();
        return false;
    }
    value_ = {*meant, isWhole_ ? *meant : value_.brought};
    ShowValue();
    Announce();
    return true;
}

void DTPicker::Refuse() {
    QString quote = text();
    if (quote.size() > kLongestQuote) {
        quote = quote.left(kLongestQuote) + u'\u2026';
    }
    ShowValue();
    const QString kind =
        format_.ShowsTime() ? QStringLiteral("date and time") : QStringLiteral("date");
    refusal_ = QStringLiteral("\"%1\" is not a %2 from 1801 to 9999.\nIt is still %3.")
                   .arg(quote, kind, text());
    isRefused_ = true;
    QApplication::beep();
    ShowRefusal();
    Announce();
}

void DTPicker::ShowRefusal() {
    QPalette marked = palette();
    marked.setColor(QPalette::Base, QColor(255, 214, 214));
    marked.setColor(QPalette::Text, Qt::black);
    setPalette(marked);
    setAccessibleDescription(refusal_);
    notice_->setText(refusal_);
    notice_->adjustSize();
    if (isVisible()) {
        notice_->move(PlaceBeside(*this, notice_->size()));
        notice_->show();
        QAccessibleEvent alert(this, QAccessible::Alert);
        QAccessible::updateAccessibility(&alert);
    }
    noticeTimer_.start(kNoticeMilliseconds);
}

void DTPicker::HideRefusal() {
    if (!accessibleDescription().isEmpty()) {
        noticeTimer_.stop();
        notice_->hide();
        setPalette(QPalette());
        setAccessibleDescription({});
    }
}

void DTPicker::Announce() {
    if (std::exchange(announced_, Meant()) != announced_) {
        Q_EMIT Change();
    }
}

void DTPicker::Step(int by) {
    const int section = std::max(section_, 0);
    if (!Take()) {
        return;
    }
    isRefused_ = false;
    HideRefusal();
    value_.moment =
        format_.Step(value_, shown_.sections[static_cast<std::size_t>(section)].field, by);
    ShowValue();
    SelectSection(section);
    Announce();
}

void DTPicker::SelectSection(int index) {
    section_ = std::clamp(index, 0, static_cast<int>(shown_.sections.size()) - 1);
    const PickerSection& section = shown_.sections[static_cast<std::size_t>(section_)];
    setSelection(static_cast<int>(section.start), static_cast<int>(section.length));
    if (section.length == 0) {
        setCursorPosition(static_cast<int>(section.start));
    }
}

void DTPicker::SelectSectionAt(const QPoint& position) {
    const int at = cursorPositionAt(position);
    const auto found = std::find_if(
        shown_.sections.begin(), shown_.sections.end(),
        [at](const PickerSection& section) { return at <= section.start + section.length; });
    SelectSection(static_cast<int>(found - shown_.sections.begin()));
}

// Left, Right, Home and End while the text has its sections.
bool DTPicker::MoveToSection(int key) {
    if (!HasSections()) {
        return false;
    }
    const int last = static_cast<int>(shown_.sections.size()) - 1;
    switch (key) {
        case Qt::Key_Left:
            SelectSection(section_ < 0 ? last : section_ - 1);
            return true;
        case Qt::Key_Right:
            SelectSection(section_ + 1);
            return true;
        case Qt::Key_Home:
            SelectSection(0);
            return true;
        case Qt::Key_End:
            SelectSection(last);
            return true;
        default:
            return false;
    }
}

void DTPicker::keyPressEvent(QKeyEvent* event) {
    constexpr int kPage = 10;
    const int key = event->key();
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
    bool isDone = true;
    if (key == Qt::Key_F4 || (key == Qt::Key_Down && modifiers == Qt::AltModifier)) {
        ShowCalendar();
    } else if (modifiers != Qt::NoModifier) {
        isDone = false;
    } else if (key == Qt::Key_Up || key == Qt::Key_Down) {
        Step(key == Qt::Key_Up ? 1 : -1);
    } else if (key == Qt::Key_PageUp || key == Qt::Key_PageDown) {
        Step(key == Qt::Key_PageUp ? kPage : -kPage);
    } else if (key == Qt::Key_Return || key == Qt::Key_Enter) {
        isDone = !Settle();
    } else if (key == Qt::Key_Escape && isTouched_) {
        ShowValue();
        Announce();
    } else {
        isDone = MoveToSection(key);
    }
    if (!isDone) {
        QLineEdit::keyPressEvent(event);
    }
}

void DTPicker::mousePressEvent(QMouseEvent* event) {
    pressed_ = event->pos();
    QLineEdit::mousePressEvent(event);
}

// A click selects a section; a drag selects text, and a third click all of it.
void DTPicker::mouseReleaseEvent(QMouseEvent* event) {
    QLineEdit::mouseReleaseEvent(event);
    const bool isDrag =
        (event->pos() - pressed_).manhattanLength() >= QApplication::startDragDistance();
    if (event->button() == Qt::LeftButton && !isDrag && HasSections() && selectedText() != text()) {
        SelectSectionAt(event->pos());
    }
}

void DTPicker::wheelEvent(QWheelEvent* event) {
    constexpr int kNotch = 120;  // eighths of a degree
    if (!hasFocus() || std::abs(event->angleDelta().y()) < kNotch) {
        event->ignore();
        return;
    }
    Step(event->angleDelta().y() / kNotch);
    event->accept();
}

void DTPicker::focusInEvent(QFocusEvent* event) {
    QLineEdit::focusInEvent(event);
    const Qt::FocusReason reason = event->reason();
    // The first focus of a window comes with its activation; a return to it keeps the section.
    const bool isReturn = reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason;
    if (!isTouched_ && reason != Qt::MouseFocusReason && !(isReturn && hasSelectedText())) {
        section_ = -1;
        selectAll();
    }
}

// A text stays as it is while the user looks at another window or at a menu.
void DTPicker::focusOutEvent(QFocusEvent* event) {
    const Qt::FocusReason reason = event->reason();
    if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason) {
        Take();
    }
    QLineEdit::focusOutEvent(event);
}

void DTPicker::resizeEvent(QResizeEvent* event) {
    QLineEdit::resizeEvent(event);
    const int frame = style()->pixelMetric(QStyle::PM_DefaultFrameWidth, nullptr, this);
    const QRect button(width() - kButtonWidth - frame, frame, kButtonWidth, height() - 2 * frame);
    drop_->setGeometry(button);
    spin_->setGeometry(button);
    setTextMargins(0, 0, kButtonWidth, 0);
}

void DTPicker::changeEvent(QEvent* event) {
    QLineEdit::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && !isActiveWindow()) {
        HideRefusal();
    }
}

void DTPicker::hideEvent(QHideEvent* event) {
    HideRefusal();
    QLineEdit::hideEvent(event);
}

void DTPicker::ShowCalendar() {
    setFocus();
    if (!format_.ShowsDay() || calendar_ || !Take()) {
        return;
    }
    HideRefusal();
    calendar_ = new QFrame(this, Qt::Popup);
    calendar_->setAttribute(Qt::WA_DeleteOnClose);
    calendar_->setFrameStyle(QFrame::Box);
    auto* month = new QCalendarWidget(calendar_);
    month->setLocale(QLocale(QLocale::English, QLocale::UnitedStates));
    month->setVerticalHeaderFormat(QCalendarWidget::NoVerticalHeader);
    month->setDateRange(CalendarDayOf(HeldInPickerYears(DateSerial(100, 1, 1))),
                        CalendarDayOf(HeldInPickerYears(DateSerial(9999, 12, 31))));
    month->setSelectedDate(CalendarDayOf(value_.moment));
    connect(month, &QCalendarWidget::clicked, this, &DTPicker::ChooseDay);
    connect(month, &QCalendarWidget::activated, this, &DTPicker::ChooseDay);
    auto* frame = new QVBoxLayout(calendar_);
    frame->setContentsMargins(0, 0, 0, 0);
    frame->addWidget(month);
    calendar_->adjustSize();
    calendar_->move(PlaceBeside(*this, calendar_->size()));
    calendar_->show();
    month->setFocus();
}

// The time of the day stays, its seconds included.
void DTPicker::ChooseDay(QDate day) {
    if (!calendar_ || !calendar_->isVisible()) {
        return;
    }
    calendar_->close();
    const ClockTime time = TimeParts(value_.moment);
    isRefused_ = false;
    HideRefusal();
    value_.moment =
        MomentOf(static_cast<std::int64_t>(DateSerial(day.year(), day.month(), day.day())),
                 time.hour * 3600 + time.minute * 60 + time.second);
    ShowValue();
    Announce();
}

}  // namespace rillbook
