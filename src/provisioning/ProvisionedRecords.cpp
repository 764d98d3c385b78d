#include "provisioning/ProvisionedRecords.h"

namespace provisioning {

Action toAction(const Record &record)
{
    Action action;
    action.dmId = record.fields.at(0).text;
    action.type = record.fields.at(1).text.toInt();
    action.action = record.fields.at(2).text;
    action.webAppName = record.fields.at(3).text;
    action.arguments = record.fields.at(4).text;
    action.label = record.fields.at(5).text;
    action.shortLabel = record.fields.at(6).text;
    return action;
}

Key toKey(const Record &record)
{
    Key key;
    key.dmId = record.fields.at(0).text;
    key.container = record.fields.at(1).text;
    key.position = record.fields.at(2).text.toInt();
    key.icon = record.fields.at(3).text;
    key.type = record.fields.at(4).text.toInt();
    key.aom_type = record.fields.at(5).text.toInt();
    key.aom_addr = record.fields.at(6).text.toInt();
    return key;
}

} // namespace provisioning
