#include "cli/CommandLine.h"
#include "commands/Commands.h"

#include <QCoreApplication>

#include <clocale>

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("progkeysctl"));
    // The width of characters is that of UTF-8, which is what is written, whatever the locale says.
    std::setlocale(LC_CTYPE, "C.UTF-8");
    cli::CommandLine line;
    commands::addAll(line);
    return line.execute(argc, argv);
}
