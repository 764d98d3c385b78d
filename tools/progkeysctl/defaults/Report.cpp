#include "defaults/Report.h"

#include "defaults/Excerpt.h"
#include "defaults/Messages.h"
#include "output/TextWidth.h"

#include <algorithm>

namespace defaults {
namespace {

constexpr int UsualWidth = 80;
constexpr int LeastWidth = 16;
const QString Indentation = QStringLiteral("    ");

QString nameOf(Severity severity)
{
    return severity == Severity::Error ? QStringLiteral("error") : QStringLiteral("warning");
}

// What stands before the record, such as the hash that begins an empty one, counts as its begin.
int columnOf(const Setting &setting, const Finding &finding)
{
    const int start = setting.records.isEmpty() ? 0 : setting.records.at(finding.record - 1).start;
    return characters(setting.text, {start, std::max(finding.place.start - start, 0)}) + 1;
}

QJsonValue fieldNameOf(const Setting &setting, const Finding &finding)
{
    const bool hasName =
        setting.kind && finding.field > 0 && finding.field <= fieldNames(*setting.kind).size();
    return hasName ? fieldNames(*setting.kind).at(finding.field - 1).name : QJsonValue();
}

// Counts on from where it was, because there may be very many findings in a very long text.
class CharacterCount
{
public:
    explicit CharacterCount(const QString &text) : m_text(text) {}

    int before(int index)
    {
        if (index < m_index)
            m_index = m_count = 0;
        m_count += characters(m_text, {m_index, index - m_index});
        m_index = index;
        return m_count;
    }

private:
    const QString &m_text;
    int m_index = 0;
    int m_count = 0;
};

QJsonObject rowOf(const Setting &setting, const Finding &finding, int character)
{
    return {{QStringLiteral("file"), setting.file},
            {QStringLiteral("record"), finding.record},
            {QStringLiteral("field"), finding.field > 0 ? finding.field : QJsonValue()},
            {QStringLiteral("fieldName"), fieldNameOf(setting, finding)},
            {QStringLiteral("column"), columnOf(setting, finding)},
            {QStringLiteral("character"), character},
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
            .arg(output::printable(setting.file), QString::number(finding.record),
                 QString::number(finding.field), QString::number(columnOf(setting, finding)));
    const QString label = nameOf(finding.severity) + QLatin1Char(':');
    return QStringLiteral("%1 %2 %3")
        .arg(terminal.bold(place),
             finding.severity == Severity::Error ? terminal.red(label) : terminal.yellow(label),
             finding.message);
}

QString contentOf(const QList<Setting> &settings)
{
    QStringList contents;
    for (const Setting &setting : settings) {
        if (setting.kind)
            contents.append(counted(static_cast<int>(setting.records.size()),
                                    setting.kind == Kind::Actions ? QStringLiteral("action")
                                                                  : QStringLiteral("key")));
    }
    return contents.isEmpty() ? QStringLiteral("the limit") : contents.join(QStringLiteral(", "));
}

QString subjectOf(const QList<Setting> &settings)
{
    return settings.size() == 1
               ? output::printable(settings.first().file)
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
        CharacterCount count(setting.text);
        for (const Finding &finding : setting.findings)
            listing.rows.append(rowOf(setting, finding, count.before(finding.place.start) + 1));
    }
    return listing;
}

QStringList linesOf(const Setting &setting, const output::Terminal &terminal)
{
    const int columns = terminal.width() > 0 ? terminal.width() : UsualWidth;
    const int width = std::max(columns - static_cast<int>(Indentation.size()), LeastWidth);
    QStringList lines;
    for (const Finding &finding : setting.findings) {
        const Excerpt excerpt = excerptOf(setting.text, finding, width);
        lines.append(headOf(setting, finding, terminal));
        lines.append(Indentation + excerpt.text);
        lines.append(Indentation + terminal.green(excerpt.marks));
    }
    return lines;
}

QString summaryOf(const QList<Setting> &settings)
{
    QStringList counts;
    const int errors = countOf(settings, Severity::Error);
    const int warnings = countOf(settings, Severity::Warning);
    if (errors > 0)
        counts.append(counted(errors, QStringLiteral("error")));
    if (warnings > 0)
        counts.append(counted(warnings, QStringLiteral("warning")));
    if (counts.isEmpty())
        return QStringLiteral("%1: %2, no complaint").arg(subjectOf(settings), contentOf(settings));
    return QStringLiteral("%1 in %2").arg(counts.join(QStringLiteral(", ")), subjectOf(settings));
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
