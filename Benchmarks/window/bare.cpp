// bench-window-bare: a window of the toolkit with nothing in it.
#include <QApplication>
#include <QMainWindow>

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QMainWindow window;
    window.resize(1280, 800);
    window.show();
    return QApplication::exec();
}
