#include "app/ZelProgrammableKeys.h"

#include "dbus/ZelProgrammableKeysAdaptor.h"
#include "events/Notifications.h"
#include "logging.h"
#include "module.h"
#include "storage/ProgKeysDatabase.h"

ZELModule &theModule()
{
    return *ZelProgrammableKeys::instance();
}

ZelProgrammableKeys *ZelProgrammableKeys::instance()
{
    static auto *const module = new ZelProgrammableKeys(moduleName());
    return module;
}

QString ZelProgrammableKeys::moduleName()
{
    return QStringLiteral("ZelProgrammableKeys");
}

ZelProgrammableKeys::ZelProgrammableKeys(const QString &name) : ZELModule(name) {}

bool ZelProgrammableKeys::check()
{
    logging::debug("ZelProgrammableKeys checking...");
    return ProgKeysDatabase::instance().checkTables();
}

bool ZelProgrammableKeys::deploy()
{
    logging::debug("ZelProgrammableKeys deploying...");
    ProgKeysDatabase::instance().resetTables();
    return true;
}

bool ZelProgrammableKeys::init()
{
    logging::debug("ZelProgrammableKeys initialization...");
    registerDBusKey();
    registerDBusAction();
    // A subscription that fails is in the log; the keys are of use without add-on modules, too.
    subscribeEvent(QStringLiteral("AOM_KEY_PRESS_EVENT"), this, SLOT(aomKeyPressed(ZELEvent)));
    return true;
}

bool ZelProgrammableKeys::start()
{
    logging::debug("ZelProgrammableKeys starting...");
    m_adaptor = new ZelProgrammableKeysAdaptor(this);
    syncDmDefaults();
    return true;
}

bool ZelProgrammableKeys::restoreDefault()
{
    logging::debug("ZelProgrammableKeys restoring data to default ...");
    ZELEvent event;
    events::databaseReset(event);
    ProgKeysDatabase::instance().resetTables();
    syncDmDefaults();
    return false;
}

bool ZelProgrammableKeys::restoreFactory()
{
    logging::debug("ZelProgrammableKeys restoring data to factory ...");
    return restoreDefault();
}
