#include "commands/KeyFilter.h"

namespace commands {

QList<cli::Parameter> placeOptions()
{
    return {cli::parameter("--container CONTAINER", "only keys in this container"),
            cli::parameter("--module ADDRESS", "only keys on the add-on module with this address",
                           cli::check::integer())};
}

bool isSelected(const Key &key, const cli::Arguments &arguments)
{
    const auto isOrNotGiven = [&arguments](const char *option, qlonglong value) {
        return !arguments.has(option) || arguments.id(option) == value;
    };
    const bool isOnModule = key.type == KeyType::AddOnModule || !arguments.has("--module");
    return isOnModule && isOrNotGiven("--module", key.aom_addr) &&
           isOrNotGiven("--type", key.type) && isOrNotGiven("--action", key.idAction) &&
           (!arguments.has("--container") || arguments.text("--container") == key.container);
}

} // namespace commands
