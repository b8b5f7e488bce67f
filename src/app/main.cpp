#include <QCoreApplication>
#include <QTextStream>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Lomir"));
    QCoreApplication::setApplicationVersion(QStringLiteral(LOMIR_VERSION));
    QTextStream out(stdout);
    out << QStringLiteral("Lomir %1\nUsage: lomir --version\n").arg(QStringLiteral(LOMIR_VERSION));
    return 0;
}
