#pragma once

#include <QDateTimeEdit>
#include <QTime>

#include "platform/text/DateTime.h"

namespace rillbook {

// A picker of a date, or of a date and time, with a drop-down calendar; English month names
// whatever the locale. The years are 1801 to 9999.
class DTPicker : public QDateTimeEdit {
    Q_OBJECT
public:
    explicit DTPicker(QWidget* parent = nullptr);

    // A midnight, unless the format shows the time. Seconds that the format doesn't show are those
    // that SetValue brought, and 0 where the user has chosen another time since.
    DateTime Value() const;
    void SetValue(DateTime value);
    // A pattern such as "MMM dd, yyyy" or "M/d/yy h:mm tt". One without a day has spin buttons in
    // place of the calendar and leaves the day as SetValue set it.
    void SetCustomFormat(const QString& pattern);

Q_SIGNALS:
    void Change();

protected:
    // A typed year of two digits is one of 1930 to 2029.
    QDateTime dateTimeFromText(const QString& text) const override;

private:
    // As SetValue brought it: the time as it is shown, and the seconds behind it.
    QTime broughtTime_{0, 0};
    int broughtSecond_ = 0;
    bool hasTwoDigitYear_ = false;
};

}  // namespace rillbook
