#include "logging.h"
#include "module/ZelProgrammableKeys.h"
#include "storage/ProgKeysDatabase.h"

ZelProgrammableKeys::MakeAdaptor ZelProgrammableKeys::s_makeAdaptor = nullptr;

ZelProgrammableKeys *ZelProgrammableKeys::instance(MakeAdaptor makeAdaptor)
{
    static auto *const module = [makeAdaptor] {
        s_makeAdaptor = makeAdaptor;
        return new ZelProgrammableKeys(moduleName());
    }();
    return module;
}

QString ZelProgrammableKeys::moduleName()
{
    return QStringLiteral("ZelProgrammableKeys");
}

ZelProgrammableKeys::ZelProgrammableKeys(const QString &name) : ZELModule(name) {}

ProgKeysDatabase &ZelProgrammableKeys::database()
{
    return ProgKeysDatabase::instance(*this);
}

Notifications ZelProgrammableKeys::notifications()
{
    return Notifications(*this);
}

bool ZelProgrammableKeys::check()
{
    logging::debug("ZelProgrammableKeys checking...");
    return database().checkTables();
}

bool ZelProgrammableKeys::deploy()
{
    logging::debug("ZelProgrammableKeys deploying...");
    database().resetTables();
    return true;
}

bool ZelProgrammableKeys::init()
{
    logging::debug("ZelProgrammableKeys initialization...");
    registerDBusKey();
    registerDBusAction();
    // The platform logs a failed subscription. Keys on the set work without add-on modules.
    subscribeEvent(QStringLiteral("AOM_KEY_PRESS_EVENT"), this, SLOT(aomKeyPressed(ZELEvent)));
    return true;
}

bool ZelProgrammableKeys::start()
{
    logging::debug("ZelProgrammableKeys starting...");
    Q_ASSERT(s_makeAdaptor);
    m_adaptor = s_makeAdaptor(this);
    syncDmDefaults();
    return true;
}

bool ZelProgrammableKeys::restoreDefault()
{
    logging::debug("ZelProgrammableKeys restoring data to default ...");
    ZELEvent event;
    notifications().databaseReset(event);
    database().resetTables();
    syncDmDefaults();
    return false;
}

bool ZelProgrammableKeys::restoreFactory()
{
    logging::debug("ZelProgrammableKeys restoring data to factory ...");
    return restoreDefault();
}
