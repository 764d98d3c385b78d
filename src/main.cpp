#include "dbus/ZelProgrammableKeysAdaptor.h"
#include "module/ZelProgrammableKeys.h"

#include <zelcore/ZELApplication.h>

namespace {

// The module is the parent of the adaptor and owns it.
QDBusAbstractAdaptor *makeAdaptor(QObject *module)
{
    return new ZelProgrammableKeysAdaptor(module);
}

} // namespace

int main(int argc, char **argv)
{
    ZELApplication application(argc, argv);
    ZELApplication::setApplicationName(QStringLiteral("%1").arg(ZelProgrammableKeys::moduleName()));
    ZelProgrammableKeys::instance(makeAdaptor);
    const int status = ZELApplication::exec();
    delete ZelProgrammableKeys::instance(makeAdaptor);
    return status;
}
