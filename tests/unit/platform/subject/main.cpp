#include "Subject.h"

#include <zelcore/ZELApplication.h>

int main(int argc, char **argv)
{
    ZELApplication application(argc, argv);
    ZELApplication::setApplicationName(QStringLiteral("Subject"));
    const Subject module(ZELApplication::arguments().mid(1));
    return ZELApplication::exec();
}
