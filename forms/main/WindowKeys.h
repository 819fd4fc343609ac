#pragma once

#include <QObject>

class QKeyEvent;
class QWidget;

namespace rillbook {

// Keys that do the same in every window, while this object lives:
//
// - Enter presses the button that has the focus, whether or not it is a default button.
// - F1 shows the help topic of the window in front.
// - F10 opens the first menu. Alt with the first letter of a menu opens the menu if its caption
//   marks no letter.
// - Alt with a letter types nothing.
// - Esc in a menu closes it and leaves the menu bar.
class WindowKeys : public QObject {
    Q_OBJECT
public:
    WindowKeys();

    // The page of the help file for a window: its own, or that of the nearest window that owns it.
    // Empty if none of them has a page.
    static QString HelpTopic(const QWidget& window);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    static bool PressKey(QWidget& target, const QKeyEvent& key);
};

}  // namespace rillbook
