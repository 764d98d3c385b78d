#pragma once

#include "provisioning/PlainText.h"
#include "provisioning/ProvisioningText.h"

namespace unit {

/// What is wrong with these records of this text, empty if nothing is. They have to be those that
/// the plain way gives, each accepted or refused by its number of fields alone, numbered from 1,
/// and with their fields at such places that places and separators together are the whole text.
QString faultIn(const QList<provisioning::Record> &records, const QString &text);

} // namespace unit
