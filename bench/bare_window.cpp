// The floor for start-up time: a Qt program that shows one empty window and nothing
// else. bench/startup measures it beside the application.

#include <QApplication>
#include <QWidget>

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    QWidget window;
    window.setWindowTitle(QStringLiteral("Bare window"));
    window.resize(720, 540);
    window.show();
    return application.exec();
}
