#pragma once

#include <QPointer>
#include <QWidget>

class QLineEdit;

namespace rillbook {

// A pair of spin buttons that steps the number in its buddy, a read-only text box. The arrow keys
// in the buddy step too. Without a buddy, the buttons only report that they were pressed.
class UpDown : public QWidget {
    Q_OBJECT
public:
    explicit UpDown(QWidget* parent = nullptr);

    void SetBuddy(QLineEdit* buddy);
    int Min() const { return min_; }
    int Max() const { return max_; }
    void SetMin(int min) { min_ = min; }
    void SetMax(int max) { max_ = max; }

    // The number in the buddy.
    int Value() const;
    // One step up or down within Min and Max; Change is emitted if the value changed.
    void Step(int direction);

Q_SIGNALS:
    void Change();
    // Without a buddy: 1 for the upper button, -1 for the lower one.
    void Pressed(int direction);

private:
    bool eventFilter(QObject* watched, QEvent* event) override;

    QPointer<QLineEdit> buddy_;
    int min_ = 0;
    int max_ = 10;
};

}  // namespace rillbook
