// What Belfry's start is measured against: a window of the same size with nothing in it.

#include <QApplication>
#include <QMainWindow>

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QMainWindow window;
    window.resize(960, 640);
    window.show();
    return QApplication::exec();
}
