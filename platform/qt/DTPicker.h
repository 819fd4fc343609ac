#pragma once

#include <QDateEdit>

#include "platform/text/DateTime.h"

namespace rillbook {

// A date picker with a drop-down calendar; English month names whatever the locale. The years are
// 1801 to 9999.
class DTPicker : public QDateEdit {
    Q_OBJECT
public:
    explicit DTPicker(QWidget* parent = nullptr);

    DateTime Value() const;  // a midnight
    void SetValue(DateTime value);
    // A pattern such as "MMM dd, yyyy". One without a day has spin buttons in place of the calendar
    // and leaves the day as SetValue set it.
    void SetCustomFormat(const QString& pattern);

Q_SIGNALS:
    void Change();
};

}  // namespace rillbook
