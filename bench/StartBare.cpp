// What any Qt program pays: an empty window of the main window's size.
#include <QApplication>
#include <QWidget>

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QWidget window;
    window.setFixedSize(587, 470);
    window.show();
    return QApplication::exec();
}
