#include "module/ZelProgrammableKeys.h"
#include "provisioning/DefaultsMerge.h"
#include "provisioning/SettingsReader.h"
#include "storage/DeferredSync.h"
#include "storage/ProgKeysDatabase.h"

namespace {

// Uses the operations of the module, so that their checks, events and log lines apply to the merge.
class ModuleOperations : public provisioning::MergeTarget
{
public:
    ModuleOperations(ZelProgrammableKeys &module, ProgKeysDatabase &database)
        : m_module(module), m_database(database)
    {
    }

    ListAction allActions() override { return m_module.getAllActions(); }
    std::optional<Action> actionWithDmId(const QString &dmId) override
    {
        return m_database.actionWithDmId(dmId);
    }
    void addAction(const Action &action) override { m_module.addAction(action); }
    void modifyAction(const Action &action) override { m_module.modifyAction(action); }
    void deleteAction(qlonglong idAction) override { m_module.deleteAction(idAction); }
    void deleteProvisionedKeys() override { m_database.deleteProvisionedKeys(); }
    void createKey(const Key &key) override { m_module.createProgrammableKey(key); }

private:
    ZelProgrammableKeys &m_module;
    ProgKeysDatabase &m_database;
};

} // namespace

// A setting that cannot be read counts as an empty text. The writes of the merge are synced
// together at its end, because every start repeats the merge and no caller waits for single writes.
void ZelProgrammableKeys::syncDmDefaults()
{
    SettingsReader &settings = SettingsReader::instance(*this);
    const QString actionsText = settings.getSettingValue(QStringLiteral("DefaultActions"));
    const QString keysText = settings.getSettingValue(QStringLiteral("DefaultKeys"));
    ModuleOperations operations(*this, database());
    const DeferredSync syncAtTheEnd;
    provisioning::mergeDefaults(operations, actionsText, keysText);
}
