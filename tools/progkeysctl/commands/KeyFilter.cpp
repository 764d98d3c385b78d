#include "commands/KeyFilter.h"

namespace commands {

bool KeyFilter::admits(const Key &key) const
{
    return (!container || key.container == *container) &&
           (!module || (key.type == KeyType::AddOnModule && key.aom_addr == *module)) &&
           (!type || key.type == *type) && (!action || key.idAction == *action);
}

QList<cli::Parameter> placeOptions()
{
    return {cli::parameter("--container CONTAINER", "only keys in this container"),
            cli::parameter("--module ADDRESS", "only keys on the add-on module with this address",
                           cli::check::integer())};
}

QList<cli::Parameter> keyFilterOptions()
{
    return placeOptions() << cli::parameter("--type NUMBER", "only keys of this type",
                                            cli::check::integer())
                          << cli::parameter("--action ACTION_ID",
                                            "only keys that trigger this action", cli::check::id);
}

KeyFilter keyFilterFrom(const cli::Arguments &arguments)
{
    KeyFilter filter;
    if (arguments.has("--container"))
        filter.container = arguments.text("--container");
    filter.module = arguments.optionalInteger("--module");
    filter.type = arguments.optionalInteger("--type");
    if (arguments.has("--action"))
        filter.action = arguments.id("--action");
    return filter;
}

} // namespace commands
