#pragma once

#include "records/Action.h"
#include "records/Capability.h"
#include "records/Key.h"

#include <zelcore/ZELModule.h>

/// What the operations answer besides ids and the storage's own codes.
namespace ResultCode {
constexpr int Success = 0;
constexpr int KeysFull = -1; ///< createProgrammableKey: the limit "ProgKeysMax" is reached
constexpr int Refused = -2;  ///< no such action or key, a protected one, or a failed insertion
} // namespace ResultCode

/// The service's one module. Its slots are the operations that the adaptor calls by name, so their
/// names, order and types are part of the bus interface; each is defined in the folder of its
/// subject. Everything runs on the thread of the event loop.
class ZelProgrammableKeys : public ZELModule
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.velmora.Tessaro.ZELInterface")

public:
    /// Made by the first call and deleted by `main`; not to be used after that.
    static ZelProgrammableKeys *instance();
    static QString moduleName();

    bool check() override;
    /// Destroys all data: the tables are dropped and made anew.
    bool deploy() override;
    bool init() override;
    bool start() override;
    /// Always returns false, also though it always goes through; the platform expects it so.
    bool restoreDefault() override;
    bool restoreFactory() override;

    /// A key, or action, that device management provisioned can not be deleted by anybody else.
    static bool isProgrammableKeyRemovable(const Key &key);
    static bool isActionRemovable(const Action &action);

    /// Merges the defaults that device management provisions into the store.
    void syncDmDefaults();

    /// Asks every add-on module that has keys with this action to show the label beside them.
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
};
