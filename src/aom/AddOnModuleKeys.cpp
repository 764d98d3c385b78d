#include "app/ZelProgrammableKeys.h"
#include "events/Notifications.h"
#include "logging.h"
#include "storage/ProgKeysDatabase.h"

#include <cmath>
#include <optional>

namespace {

// The one kind of module whose icons and labels can be set. Unlike a press, these operations go
// by the kind of module and not by the type of the key.
constexpr int SettableModuleType = 1;

// QVariant narrows a number that is too large without a word; 2^32 + 5 is no key 5.
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

// What a press of a key that nobody programmed is reported with.
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

    ZELEvent answer;
    const auto key = ProgKeysDatabase::instance().keyAtPlace(KeyType::AddOnModule, *position,
                                                             *aom_type, *aom_addr);
    if (!key) {
        events::moduleKeyPressed(answer, unprogrammedKey(*position, *aom_type, *aom_addr), Action(),
                                 false);
        return;
    }
    const ListAction actions = getAction(key->idAction);
    events::moduleKeyPressed(answer, *key, actions.isEmpty() ? Action() : actions.first(), true);
}

int ZelProgrammableKeys::setIconStateForKey(qlonglong idKey, int icon_x, int icon_y)
{
    const ListKey keys = getProgrammableKey(idKey);
    if (keys.isEmpty() || keys.first().aom_type != SettableModuleType) {
        logging::error("In setIconStateForKey, not an aom key, id[%1]", idKey);
        return ResultCode::Refused;
    }
    ZELEvent event;
    events::setModuleIcon(event, events::placeOf(keys.first()), icon_x, icon_y);
    return ResultCode::Success;
}

int ZelProgrammableKeys::setLabelStateForKey(qlonglong idKey, int state)
{
    const ListKey keys = getProgrammableKey(idKey);
    if (keys.isEmpty() || keys.first().aom_type != SettableModuleType) {
        logging::error("In setLabelStateForKey, not an aom key, id[%1]", idKey);
        return ResultCode::Refused;
    }
    const Key &key = keys.first();
    const ListAction actions = getAction(key.idAction);
    if (actions.isEmpty()) {
        logging::error("In setLabelStateForKey, internal error action does not exists, id[%1]",
                       key.idAction);
        return ResultCode::Refused;
    }
    ZELEvent event;
    events::setModuleLabel(event, events::placeOf(key), state, actions.first().shortLabel);
    return ResultCode::Success;
}
