#include "logging.h"
#include "module/ZelProgrammableKeys.h"
#include "records/ResultCode.h"
#include "storage/ProgKeysDatabase.h"

#include <cmath>
#include <optional>

namespace {

// The only module type whose icons and labels can be set. These operations check the type of the
// module, but a press checks the type of the key.
constexpr int SettableModuleType = 1;

// QVariant truncates numbers that do not fit without an error: 2^32 + 5 would be key 5.
std::optional<int> toInt(const QVariant &value)
{
    bool isNumber = false;
    const int number = value.toInt(&isNumber);
    if (!isNumber || !(std::abs(value.toDouble() - number) < 1.0))
        return std::nullopt;
    return number;
}

std::optional<int> readArgument(const ZELEvent &event, const QString &name, const char *complaint)
{
    const std::optional<int> number = toInt(event.getArgument(name));
    if (!number)
        logging::error(complaint, event.getEvtName());
    return number;
}

// The key in the event for a press of an unprogrammed key.
Key unprogrammedKey(int position, int aom_type, int aom_addr)
{
    Key key;
    key.type = KeyType::AddOnModule;
    key.position = position;
    key.aom_type = aom_type;
    key.aom_addr = aom_addr;
    return key;
}

} // namespace

void ZelProgrammableKeys::aomKeyPressed(const ZELEvent &event)
{
    const auto position =
        readArgument(event, QStringLiteral("aom_key_num"),
                     "Argument aom_key_num passed to event %1 has got an invalid value.");
    if (!position)
        return;
    const auto aom_type =
        readArgument(event, QStringLiteral("aom_type"),
                     "Argument aom_type passed to event %1 has got an invalid value.");
    if (!aom_type)
        return;
    const auto aom_addr =
        readArgument(event, QStringLiteral("addr"),
                     "Argument aom_addr passed to event %1 has got an invalid value.");
    if (!aom_addr)
        return;

    const auto key = database().keyAtPlace(KeyType::AddOnModule, *position, *aom_type, *aom_addr);
    if (key) {
        reportPress(*key);
        return;
    }
    ZELEvent answer;
    notifications().moduleKeyPressed(answer, unprogrammedKey(*position, *aom_type, *aom_addr),
                                     Action(), false);
}

// The action of a stored key may no longer exist. The press is still reported, with a default
// action.
void ZelProgrammableKeys::reportPress(const Key &key)
{
    const ListAction actions = database().action(key.idAction);
    if (actions.isEmpty())
        logging::error("No action found for key of id %1", key.idAction);
    ZELEvent answer;
    notifications().moduleKeyPressed(answer, key, actions.isEmpty() ? Action() : actions.first(),
                                     true);
}

int ZelProgrammableKeys::setIconStateForKey(qlonglong idKey, int icon_x, int icon_y)
{
    const ListKey keys = database().key(idKey);
    if (keys.isEmpty() || keys.first().aom_type != SettableModuleType) {
        logging::error("In setIconStateForKey, not an aom key, id[%1]", idKey);
        return ResultCode::Refused;
    }
    ZELEvent event;
    notifications().setModuleIcon(event, placeOf(keys.first()), icon_x, icon_y);
    return ResultCode::Success;
}

int ZelProgrammableKeys::setLabelStateForKey(qlonglong idKey, int state)
{
    const ListKey keys = database().key(idKey);
    if (keys.isEmpty() || keys.first().aom_type != SettableModuleType) {
        logging::error("In setLabelStateForKey, not an aom key, id[%1]", idKey);
        return ResultCode::Refused;
    }
    const Key &key = keys.first();
    const ListAction actions = database().action(key.idAction);
    if (actions.isEmpty()) {
        logging::error("In setLabelStateForKey, internal error action does not exists, id[%1]",
                       key.idAction);
        return ResultCode::Refused;
    }
    ZELEvent event;
    notifications().setModuleLabel(event, placeOf(key), state, actions.first().shortLabel);
    return ResultCode::Success;
}
