#pragma once

#include <QApplication>
#include <exception>

namespace rillbook {

// Tells the user of a failure that no command foresaw, in one message. One that comes while the
// message is up, as from a repaint beneath it, is dropped.
void TellFailure(const std::exception& failure);

// Lets no exception into the event loop: it is told to the user, and the program goes on.
class GuardedApplication : public QApplication {
    Q_OBJECT
public:
    using QApplication::QApplication;
    bool notify(QObject* receiver, QEvent* event) override;
};

}  // namespace rillbook
