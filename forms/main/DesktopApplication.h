#pragma once

#include <QApplication>
#include <exception>

#include "forms/main/WindowKeys.h"

namespace rillbook {

// Tells the user of a failure that no command foresaw, in one message. One that comes while the
// message is up, as from a repaint beneath it, is dropped.
void TellFailure(const std::exception& failure);

// The program as the window system sees it. An exception doesn't get into the event loop: it is
// told to the user, and the program goes on. The font is the one whose texts fit the forms, which
// are laid out in twips.
class DesktopApplication : public QApplication {
    Q_OBJECT
public:
    DesktopApplication(int& argc, char** argv);

    bool notify(QObject* receiver, QEvent* event) override;

private:
    WindowKeys keys_;
};

}  // namespace rillbook
