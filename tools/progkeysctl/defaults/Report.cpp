#include "defaults/Report.h"

#include "defaults/FieldCount.h"
#include "output/Text.h"

#include <algorithm>

namespace defaults {
namespace {

constexpr int ShownProblems = 50;
constexpr int UsualWidth = 80;
constexpr int LeastWidth = 16;
const QString Indentation = QStringLiteral("    ");

using output::counted;
using output::printable;
using output::textWidth;

QString nameOf(Severity severity)
{
    return severity == Severity::Error ? QStringLiteral("error") : QStringLiteral("warning");
}

const provisioning::Record *recordOf(const Setting &setting, const Finding &finding)
{
    return finding.record > setting.records.size() ? nullptr
                                                   : &setting.records.at(finding.record - 1);
}

// The hash before an empty record counts as its start.
int columnOf(const Setting &setting, const Finding &finding)
{
    const provisioning::Record *record = recordOf(setting, finding);
    const int start = record ? record->start : 0;
    return characters(setting.text, {start, std::max(finding.place.start - start, 0)}) + 1;
}

QJsonValue fieldNameOf(const Setting &setting, const Finding &finding)
{
    const bool hasName = finding.field > 0 && finding.field <= fieldNames(setting.kind).size();
    return hasName ? fieldNames(setting.kind).at(finding.field - 1).name : QJsonValue();
}

QJsonObject rowOf(const Setting &setting, const Finding &finding)
{
    return {{QStringLiteral("file"), setting.file},
            {QStringLiteral("record"), finding.record},
            {QStringLiteral("field"), finding.field > 0 ? finding.field : QJsonValue()},
            {QStringLiteral("fieldName"), fieldNameOf(setting, finding)},
            {QStringLiteral("column"), columnOf(setting, finding)},
            {QStringLiteral("character"), characters(setting.text, {0, finding.place.start}) + 1},
            {QStringLiteral("severity"), nameOf(finding.severity)},
            {QStringLiteral("code"), finding.code},
            {QStringLiteral("message"), finding.message}};
}

output::Column column(const char *name, bool isNumber = false)
{
    return {QString::fromLatin1(name), QString::fromLatin1(name).toUpper(), isNumber};
}

QString headOf(const Setting &setting, const Finding &finding, const output::Terminal &terminal)
{
    const QString place =
        QStringLiteral("%1:%2:%3:%4:")
            .arg(printable(setting.file), QString::number(finding.record),
                 QString::number(finding.field), QString::number(columnOf(setting, finding)));
    const QString label = nameOf(finding.severity) + QLatin1Char(':');
    return QStringLiteral("%1 %2 %3")
        .arg(terminal.bold(place),
             finding.severity == Severity::Error ? terminal.red(label) : terminal.yellow(label),
             finding.message);
}

// The end of the text before a place, in so many columns at most.
QString endOf(const QString &text, int width)
{
    QString end = printable(text.right(width));
    if (text.size() <= width && textWidth(end) <= width)
        return end;
    while (textWidth(end) >= width)
        end.remove(0, end.at(0).isHighSurrogate() ? 2 : 1);
    return QChar(0x2026) + end;
}

// The text around the place, and `^~~~` below the place.
QStringList excerptOf(const Setting &setting, const Finding &finding, int width,
                      const output::Terminal &terminal)
{
    const provisioning::Record *record = recordOf(setting, finding);
    const bool isInRecord = record && record->length > 0;
    const Span shown =
        isInRecord ? spanOf(*record) : Span{0, static_cast<int>(setting.text.size())};
    const Span &place = finding.place;
    const QString marked = printable(setting.text.mid(place.start, std::min(place.length, width)));
    const QString before =
        endOf(setting.text.mid(shown.start, place.start - shown.start), width / 2);
    const QString after = setting.text.mid(place.end(), std::min(shown.end() - place.end(), width));
    const QString line = output::elided(before + marked + printable(after), width);
    const int start = textWidth(before);
    const int length = std::max(1, std::min(textWidth(marked), textWidth(line) - start));
    return {line, QString(start, QLatin1Char(' ')) +
                      terminal.green(QStringLiteral("^").leftJustified(length, QLatin1Char('~')))};
}

QStringList detailsOf(const Setting &setting, const Finding &finding, int width,
                      const output::Terminal &terminal)
{
    const bool isOfWholeFile = finding.place.length == 0 && finding.field == 0;
    if (isOfWholeFile)
        return {};
    if (finding.code != QLatin1String("field-count") || finding.field > 0)
        return excerptOf(setting, finding, width, terminal);
    QStringList lines;
    for (const QString &line : fieldByField(setting.kind, *recordOf(setting, finding)))
        lines.append(output::elided(line, width));
    return lines;
}

QString contentOf(const Setting &setting)
{
    return setting.kind == Kind::Limit
               ? QStringLiteral("1 limit")
               : counted(static_cast<int>(setting.records.size()), setting.kind == Kind::Actions
                                                                       ? QStringLiteral("action")
                                                                       : QStringLiteral("key"));
}

QString subjectOf(const QList<Setting> &settings)
{
    return settings.size() == 1
               ? printable(settings.first().file)
               : counted(static_cast<int>(settings.size()), QStringLiteral("file"));
}

} // namespace

output::Listing listingOf(const QList<Setting> &settings)
{
    output::Listing listing;
    listing.columns = {column("file"),      column("record", true), column("field", true),
                       column("fieldName"), column("column", true), column("severity"),
                       column("code"),      column("message"),      column("character", true)};
    for (const Setting &setting : settings) {
        for (const Finding &finding : setting.findings)
            listing.rows.append(rowOf(setting, finding));
    }
    return listing;
}

QStringList linesOf(const QList<Setting> &settings, const output::Terminal &terminal)
{
    const int columns = terminal.width() > 0 ? terminal.width() : UsualWidth;
    const int width = std::max(columns - static_cast<int>(Indentation.size()), LeastWidth);
    QStringList lines;
    int count = 0;
    for (const Setting &setting : settings) {
        for (const Finding &finding : setting.findings) {
            if (++count > ShownProblems)
                continue;
            lines.append(headOf(setting, finding, terminal));
            const QStringList details = detailsOf(setting, finding, width, terminal);
            for (const QString &line : details)
                lines.append(Indentation + line);
        }
    }
    if (count > ShownProblems)
        lines.append(QStringLiteral("%1 are not shown")
                         .arg(counted(count - ShownProblems, QStringLiteral("more problem"))));
    return lines;
}

QString summaryOf(const QList<Setting> &settings)
{
    QStringList parts;
    const int errors = countOf(settings, Severity::Error);
    const int warnings = countOf(settings, Severity::Warning);
    if (errors > 0)
        parts.append(counted(errors, QStringLiteral("error")));
    if (warnings > 0)
        parts.append(counted(warnings, QStringLiteral("warning")));
    if (!parts.isEmpty())
        return QStringLiteral("%1 in %2")
            .arg(parts.join(QStringLiteral(", ")), subjectOf(settings));
    for (const Setting &setting : settings)
        parts.append(contentOf(setting));
    return QStringLiteral("%1: %2, no problems")
        .arg(subjectOf(settings), parts.join(QStringLiteral(", ")));
}

int countOf(const QList<Setting> &settings, Severity severity)
{
    int count = 0;
    for (const Setting &setting : settings)
        count += static_cast<int>(
            std::count_if(setting.findings.cbegin(), setting.findings.cend(),
                          [&](const Finding &finding) { return finding.severity == severity; }));
    return count;
}

} // namespace defaults
