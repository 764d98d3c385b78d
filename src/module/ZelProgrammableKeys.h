#pragma once

#include "events/Notifications.h"
#include "records/Action.h"
#include "records/Capability.h"
#include "records/Key.h"

#include <zelcore/ZELModule.h>

class ProgKeysDatabase;
class QDBusAbstractAdaptor;

/// The module of the service. The D-Bus adaptor calls its slots by name, so their names, order and
/// types are part of the bus interface. All code runs on the thread of the event loop.
class ZelProgrammableKeys : public ZELModule
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.velmora.Tessaro.ZELInterface")

public:
    /// Creates the adaptor that publishes the module's operations, as a child of the module.
    using MakeAdaptor = QDBusAbstractAdaptor *(*)(QObject *module);

    /// The single instance. The first call creates it, and `main` deletes it at the end of the
    /// process. `start` calls the function that was passed to the first call.
    static ZelProgrammableKeys *instance(MakeAdaptor makeAdaptor);
    static QString moduleName();

    bool check() override;
    /// Deletes all data: drops and recreates the tables.
    bool deploy() override;
    bool init() override;
    bool start() override;
    /// Returns false even if all steps succeed, because the platform expects this result.
    bool restoreDefault() override;
    bool restoreFactory() override;

    /// False for a provisioned key or action, which clients cannot delete.
    static bool isProgrammableKeyRemovable(const Key &key);
    static bool isActionRemovable(const Action &action);

    /// Merges the defaults that device management provisions into the database.
    void syncDmDefaults();

    /// Requests that the add-on modules show the label on all keys that trigger this action.
    void updateAomLabelsForAction(qlonglong idAction, const QString &label);

public slots:
    ListKey getAllProgrammableKeys();
    ListKey getProgrammableKeysByContainer(const QString &container);
    qlonglong createProgrammableKey(Key key);
    int modifyProgrammableKey(const Key &key);
    bool changeProgrammableKeysPosition(const QMapIntInt &listId);
    int deleteProgrammableKey(qlonglong idKey);
    ListKey getProgrammableKey(qlonglong idKey);
    ListAction getAllActions();
    qlonglong addAction(Action action);
    int modifyAction(const Action &action);
    int deleteAction(qlonglong idAction);
    ListAction getAction(qlonglong idAction);
    int setIconStateForKey(qlonglong idKey, int icon_x, int icon_y);
    int setLabelStateForKey(qlonglong idKey, int state);

private slots:
    void aomKeyPressed(const ZELEvent &event);

protected:
    explicit ZelProgrammableKeys(const QString &name);

private:
    ProgKeysDatabase &database();
    Notifications notifications();

    bool actionExists(qlonglong idAction);
    bool hasRoomFor(const Key &key);
    void showDefaultIcon(const Key &key);
    void reportPress(const Key &key);

    static MakeAdaptor s_makeAdaptor;
};
