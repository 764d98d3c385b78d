#include "provisioning/ProvisionedRecords.h"
#include "provisioning/RecordCheck.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

void failOn(const QString &fault, const QString &text)
{
    if (fault.isEmpty())
        return;
    std::fprintf(stderr, "%s\nin the text \"%s\"\n", qUtf8Printable(fault), qUtf8Printable(text));
    std::abort();
}

QString faultInConversions(const provisioning::Record &record)
{
    const QString dmId = record.fields.first().text;
    if (provisioning::toAction(record).dmId != dmId || provisioning::toKey(record).dmId != dmId)
        return QStringLiteral("record %1: the identifier is lost").arg(record.number);
    return {};
}

} // namespace

/// Compares the records of a random text with those of a simple parser, and converts the accepted
/// records to actions and keys.
// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString text =
        QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<int>(size));
    const QList<provisioning::Record> records = provisioning::parseText(text);
    failOn(unit::faultIn(records, text), text);
    for (const provisioning::Record &record : records) {
        if (record.isAccepted())
            failOn(faultInConversions(record), text);
    }
    return 0;
}
