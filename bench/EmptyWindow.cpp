// What Belfry's start is measured against: a window of the same size with nothing in it, or with the text
// that it is given, which shows what part of the time goes into having fonts at all.

#include <QApplication>
#include <QLabel>
#include <QMainWindow>

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QMainWindow window;
    if (argc > 1)
        window.setCentralWidget(new QLabel(QString::fromLocal8Bit(argv[1])));
    window.resize(960, 640);
    window.show();
    return QApplication::exec();
}
