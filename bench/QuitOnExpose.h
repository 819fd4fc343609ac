#pragma once

#include <QCoreApplication>
#include <QEvent>
#include <QExposeEvent>
#include <QTimer>
#include <cstdlib>

namespace rillbook {

// Ends the process at once when the first window has been exposed and painted.
class QuitOnExpose : public QObject {
public:
    explicit QuitOnExpose(QCoreApplication& application) { application.installEventFilter(this); }

private:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Expose) {
            QTimer::singleShot(0, [] { std::_Exit(0); });
        }
        return false;
    }
};

}  // namespace rillbook
