#include "platform/qt/DTPicker.h"

#include <QCalendarWidget>
#include <QLocale>

namespace rillbook {

DTPicker::DTPicker(QWidget* parent) : QDateEdit(parent) {
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
    connect(this, &QDateEdit::userDateChanged, this, &DTPicker::Change);
}

DateTime DTPicker::Value() const {
    const QDate shown = date();
    return DateSerial(shown.year(), shown.month(), shown.day());
}

void DTPicker::SetValue(DateTime value) {
    const CalendarDate parts = DateParts(value);
    setDate(qBound(minimumDate(), QDate(parts.year, parts.month, parts.day), maximumDate()));
}

void DTPicker::SetCustomFormat(const QString& pattern) {
    QString whole = pattern;
    if (whole.count(u'y') == 3) {
        whole.replace(QStringLiteral("yyy"), QStringLiteral("yyyy"));
    }
    // Where only month and year show, the calendar would choose a day that no one sees.
    setCalendarPopup(whole.contains(u'd'));
    setDisplayFormat(whole);
}

}  // namespace rillbook
