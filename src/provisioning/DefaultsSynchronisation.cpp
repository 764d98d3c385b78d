#include "app/ZelProgrammableKeys.h"
#include "provisioning/DefaultsMerge.h"
#include "provisioning/SettingsReader.h"
#include "storage/ProgKeysDatabase.h"

namespace {

// The module's operations, as any client would use them.
class ModuleOperations : public provisioning::MergeTarget
{
public:
    explicit ModuleOperations(ZelProgrammableKeys &module) : m_module(module) {}

    ListAction allActions() override { return m_module.getAllActions(); }
    std::optional<Action> actionWithDmId(const QString &dmId) override
    {
        return ProgKeysDatabase::instance().actionWithDmId(dmId);
    }
    void addAction(const Action &action) override { m_module.addAction(action); }
    void modifyAction(const Action &action) override { m_module.modifyAction(action); }
    void deleteAction(qlonglong idAction) override { m_module.deleteAction(idAction); }
    void deleteProvisionedKeys() override { ProgKeysDatabase::instance().deleteProvisionedKeys(); }
    void createKey(const Key &key) override { m_module.createProgrammableKey(key); }

private:
    ZelProgrammableKeys &m_module;
};

} // namespace

// A setting that cannot be read comes as an empty text, and counts as one.
void ZelProgrammableKeys::syncDmDefaults()
{
    SettingsReader &settings = SettingsReader::instance();
    const QString actionsText = settings.getSettingValue(QStringLiteral("DefaultActions"));
    const QString keysText = settings.getSettingValue(QStringLiteral("DefaultKeys"));
    ModuleOperations operations(*this);
    provisioning::mergeDefaults(operations, actionsText, keysText);
}
