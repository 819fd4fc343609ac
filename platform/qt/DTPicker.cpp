#include "platform/qt/DTPicker.h"

#include <QCalendarWidget>
#include <QLocale>

namespace rillbook {

DTPicker::DTPicker(QWidget* parent) : QDateTimeEdit(parent) {
    // Not every day has a midnight by the local clock; in UTC each one does.
    setTimeSpec(Qt::UTC);
    const QLocale english(QLocale::English, QLocale::UnitedStates);
    setLocale(english);
    setDateRange(QDate(1801, 1, 1), QDate(9999, 12, 31));
    SetCustomFormat(QStringLiteral("MMM dd, yyyy"));
    auto* calendar = new QCalendarWidget;
    calendar->setLocale(english);
    calendar->setVerticalHeaderFormat(QCalendarWidget::NoVerticalHeader);
    setCalendarWidget(calendar);
    connect(this, &QDateTimeEdit::dateTimeChanged, this, &DTPicker::Change);
}

DateTime DTPicker::Value() const {
    const QDate day = date();
    const DateTime midnight = DateSerial(day.year(), day.month(), day.day());
    if ((displayedSections() & TimeSections_Mask) == 0) {
        return midnight;
    }
    const int second = time() == broughtTime_ ? broughtSecond_ : 0;
    return MomentOf(static_cast<std::int64_t>(midnight),
                    std::int64_t{time().msecsSinceStartOfDay() / 1000} + second);
}

void DTPicker::SetValue(DateTime value) {
    const CalendarDate parts = DateParts(value);
    const ClockTime clock = TimeParts(value);
    broughtTime_ = QTime(clock.hour, clock.minute);
    broughtSecond_ = clock.second;
    const QDate day(parts.year, parts.month, parts.day);
    setDateTime(QDateTime(qBound(minimumDate(), day, maximumDate()), broughtTime_, Qt::UTC));
}

QDateTime DTPicker::dateTimeFromText(const QString& text) const {
    // The year, in the century of the one before it where the text has two digits.
    const QDateTime read = QDateTimeEdit::dateTimeFromText(text);
    const int year = read.date().year();
    if (!hasTwoDigitYear_ || year % 100 == date().year() % 100) {
        return read;
    }
    const DateTime meant = DateSerial(year % 100, read.date().month(), read.date().day());
    const CalendarDate parts = DateParts(meant);
    return {QDate(parts.year, parts.month, parts.day), read.time(), Qt::UTC};
}

void DTPicker::SetCustomFormat(const QString& pattern) {
    QString whole = pattern;
    if (whole.count(u'y') == 3) {
        whole.replace(QStringLiteral("yyy"), QStringLiteral("yyyy"));
    }
    whole.replace(QStringLiteral("tt"), QStringLiteral("AP"));
    hasTwoDigitYear_ = whole.count(u'y') == 2;
    // Where only month and year show, the calendar would choose a day that no one sees.
    setCalendarPopup(whole.contains(u'd'));
    setDisplayFormat(whole);
}

}  // namespace rillbook
