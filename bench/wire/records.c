#include "wire/records.h"

int append_key(sd_bus_message *message, const struct key *key)
{
    return sd_bus_message_append(message, "(" KEY ")", key->idKey, key->dmId, key->idAction,
                                 key->container, key->position, key->icon, key->type, key->aom_type,
                                 key->aom_addr);
}

int append_action(sd_bus_message *message, const struct action *action)
{
    return sd_bus_message_append(message, "(" ACTION ")", action->idAction, action->dmId,
                                 action->type, action->action, action->webAppName,
                                 action->arguments, action->label, action->shortLabel);
}

int read_key(sd_bus_message *message, struct key *key)
{
    return sd_bus_message_read(message, "(" KEY ")", &key->idKey, &key->dmId, &key->idAction,
                               &key->container, &key->position, &key->icon, &key->type,
                               &key->aom_type, &key->aom_addr);
}

int read_action(sd_bus_message *message, struct action *action)
{
    return sd_bus_message_read(message, "(" ACTION ")", &action->idAction, &action->dmId,
                               &action->type, &action->action, &action->webAppName,
                               &action->arguments, &action->label, &action->shortLabel);
}
