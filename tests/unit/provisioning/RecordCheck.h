#pragma once

#include "provisioning/PlainText.h"
#include "provisioning/ProvisioningText.h"

namespace unit {

/// The first fault in the records of a text, or an empty text if there is none. The records must be
/// those of the simple parser and numbered from 1, and only the number of fields decides whether
/// they are accepted. The fields and the separators together must cover the whole text.
QString faultIn(const QList<provisioning::Record> &records, const QString &text);

} // namespace unit
