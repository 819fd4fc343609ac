// What any Qt program pays: an empty window, until it is exposed.
#include <QApplication>
#include <QWidget>
#include <QWindow>

#include "bench/QuitOnExpose.h"

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QWidget window;
    window.setFixedSize(587, 470);
    rillbook::QuitOnExpose watch(application);
    window.show();
    return QApplication::exec();
}
