// Linked into a program, ends it at once when its first window has been exposed and painted.
#include <QCoreApplication>
#include <QEvent>
#include <QTimer>
#include <cstdlib>

namespace {

class QuitOnExpose : public QObject {
public:
    using QObject::QObject;

private:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Expose) {
            QTimer::singleShot(0, [] { std::_Exit(0); });
        }
        return false;
    }
};

void Watch() {
    QCoreApplication::instance()->installEventFilter(
        new QuitOnExpose(QCoreApplication::instance()));
}

}  // namespace

Q_COREAPP_STARTUP_FUNCTION(Watch)
