#pragma once

#include "provisioning/PlainText.h"
#include "provisioning/ProvisioningText.h"

namespace unit {

/// What is wrong with these records of this text; empty if nothing is. They must be those of the
/// plain way, accepted by their number of fields alone and numbered from 1. The places of the
/// fields and the separators together must cover the whole text.
QString faultIn(const QList<provisioning::Record> &records, const QString &text);

} // namespace unit
