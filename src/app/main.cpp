#include "app/ZelProgrammableKeys.h"

#include <zelcore/ZELApplication.h>

int main(int argc, char **argv)
{
    ZELApplication application(argc, argv);
    ZELApplication::setApplicationName(QStringLiteral("%1").arg(ZelProgrammableKeys::moduleName()));
    ZelProgrammableKeys::instance();
    const int status = ZELApplication::exec();
    delete ZelProgrammableKeys::instance();
    return status;
}
