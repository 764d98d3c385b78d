#include "commands/KeyFilter.h"

#include "cli/Checks.h"
#include "cli/CommandLine.h"

namespace commands {

bool KeyFilter::admits(const Key &key) const
{
    return (!container || key.container == QString::fromStdString(*container)) &&
           (!module || (key.type == KeyType::AddOnModule && key.aom_addr == *module)) &&
           (!type || key.type == *type);
}

void addPlaceOptions(CLI::App *command, KeyFilter &filter)
{
    command->add_option("--container", filter.container, "only keys in this container")
        ->type_name(cli::type::Container);
    command->add_option("--module", filter.module, "only keys on the add-on module at this address")
        ->type_name(cli::type::ModuleAddress)
        ->transform(cli::wholeNumber());
}

} // namespace commands
