#include "tools/defaults/Findings.h"

#include "defaults/RecordChecks.h"

namespace unit {

QString utf8(const char *text)
{
    return QString::fromUtf8(text);
}

QStringList brief(const defaults::Setting &setting)
{
    QStringList all;
    for (const defaults::Finding &finding : setting.findings)
        all.append(QStringLiteral("%1:%2 %3 of %4")
                       .arg(QString::number(finding.record), QString::number(finding.field),
                            finding.code,
                            setting.text.mid(finding.place.start, finding.place.length)));
    return all;
}

defaults::Setting checked(defaults::Kind kind, const QByteArray &bytes)
{
    defaults::Setting setting = defaults::readSetting(QStringLiteral("file"), kind, bytes);
    defaults::checkRecords(setting);
    return setting;
}

} // namespace unit
