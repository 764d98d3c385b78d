#include "commands/KeyFilter.h"

namespace commands {

bool KeyFilter::admits(const Key &key) const
{
    return (!container || key.container == *container) &&
           (!module || (key.type == KeyType::AddOnModule && key.aom_addr == *module)) &&
           (!type || key.type == *type);
}

QList<cli::Parameter> placeOptions()
{
    return {cli::option("--container", cli::type::text("CONTAINER"), "only keys in this container"),
            cli::option("--module", cli::type::integer("MODULE"),
                        "only keys on the add-on module at this address")};
}

KeyFilter keyFilterFrom(const cli::Arguments &arguments)
{
    KeyFilter filter;
    if (arguments.has("--container"))
        filter.container = arguments.text("--container");
    filter.module = arguments.optionalInteger("--module");
    filter.type = arguments.optionalInteger("--type");
    return filter;
}

} // namespace commands
