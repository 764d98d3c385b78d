#include "defaults/Report.h"

#include "output/Text.h"

#include <algorithm>

namespace defaults {
namespace {

using output::counted;
using output::printable;
using output::textWidth;
using provisioning::FieldCount;
using provisioning::Record;

constexpr int ShownProblems = 50;
const QString Indentation = QStringLiteral("    ");

QString nameOf(Severity severity)
{
    return severity == Severity::Error ? QStringLiteral("error") : QStringLiteral("warning");
}

int characters(const QString &text, int start, int end)
{
    return static_cast<int>(text.mid(start, std::max(0, end - start)).toUcs4().size());
}

Record recordOf(const Setting &setting, const Problem &problem)
{
    return setting.records.value(problem.record - 1);
}

// The hash before an empty record counts as its start.
int columnOf(const Setting &setting, const Problem &problem)
{
    return characters(setting.text, recordOf(setting, problem).start, problem.place.start) + 1;
}

QString headOf(const Setting &setting, const Problem &problem, const output::Terminal &terminal)
{
    const QString place =
        QStringLiteral("%1:%2:%3:%4:")
            .arg(printable(setting.file), QString::number(problem.record),
                 QString::number(problem.field), QString::number(columnOf(setting, problem)));
    const QString label = nameOf(problem.severity) + QLatin1Char(':');
    return QStringLiteral("%1 %2 %3")
        .arg(terminal.bold(place),
             problem.severity == Severity::Error ? terminal.red(label) : terminal.yellow(label),
             problem.message);
}

// The end of a text, in so many columns at most.
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
QStringList excerptOf(const Setting &setting, const Problem &problem, int width,
                      const output::Terminal &terminal)
{
    const Record record = recordOf(setting, problem);
    const Span shown =
        record.length > 0 ? spanOf(record) : Span{0, static_cast<int>(setting.text.size())};
    const Span &place = problem.place;
    const QString before =
        endOf(setting.text.mid(shown.start, place.start - shown.start), width / 2);
    const QString marked = printable(setting.text.mid(place.start, place.length));
    const QString after = printable(setting.text.mid(place.end(), shown.end() - place.end()));
    const QString line = output::elided(before + marked + after, width);
    const int start = textWidth(before);
    const int length = std::max(1, std::min(textWidth(marked), textWidth(line) - start));
    return {line, QString(start, QLatin1Char(' ')) +
                      terminal.green(QStringLiteral("^").leftJustified(length, QLatin1Char('~')))};
}

QStringList fieldByField(const Setting &setting, const Record &record, int width)
{
    constexpr int NameWidth = 12;
    constexpr int Surplus = 3; // shown fields that have no name
    const QStringList names = fieldNames(setting.kind);
    const int size = static_cast<int>(record.fields.size());
    QStringList lines;
    for (int field = 0; field < std::max(FieldCount, std::min(size, FieldCount + Surplus));
         ++field) {
        const QString name = names.value(field, QStringLiteral("-"));
        const QString text =
            field < size ? printable(record.fields.at(field).text) : QStringLiteral("(missing)");
        lines.append(text.isEmpty() ? name
                                    : output::elided(name.leftJustified(NameWidth) + text, width));
    }
    if (size > FieldCount + Surplus)
        lines.append(QStringLiteral("..."));
    return lines;
}

QStringList detailsOf(const Setting &setting, const Problem &problem,
                      const output::Terminal &terminal)
{
    constexpr int UsualWidth = 80;
    constexpr int LeastWidth = 16;
    const int columns = terminal.width() > 0 ? terminal.width() : UsualWidth;
    const int width = std::max(columns - static_cast<int>(Indentation.size()), LeastWidth);
    const bool isOfWholeFile = problem.place.length == 0 && problem.field == 0;
    if (isOfWholeFile)
        return {};
    return problem.code == QLatin1String("field-count") && problem.field == 0
               ? fieldByField(setting, recordOf(setting, problem), width)
               : excerptOf(setting, problem, width, terminal);
}

QString contentOf(const Setting &setting)
{
    const QString noun = setting.kind == Kind::Actions ? QStringLiteral("action")
                         : setting.kind == Kind::Keys  ? QStringLiteral("key")
                                                       : QStringLiteral("limit");
    const auto count = setting.kind == Kind::Limit ? 1 : setting.records.size();
    return counted(static_cast<int>(count), noun);
}

} // namespace

output::Listing listingOf(const Rollout &rollout)
{
    output::Listing listing;
    for (const char *name : {"file", "record", "field", "fieldName", "column", "severity", "code",
                             "message", "character"})
        listing.columns.append({QString::fromLatin1(name)});
    for (const auto &[kind, setting] : rollout.settings) {
        for (const Problem &problem : setting.problems) {
            const QString field = fieldNames(setting.kind).value(problem.field - 1);
            listing.rows.append(
                {{QStringLiteral("file"), setting.file},
                 {QStringLiteral("record"), problem.record},
                 {QStringLiteral("field"), problem.field > 0 ? problem.field : QJsonValue()},
                 {QStringLiteral("fieldName"), field.isEmpty() ? QJsonValue() : field},
                 {QStringLiteral("column"), columnOf(setting, problem)},
                 {QStringLiteral("severity"), nameOf(problem.severity)},
                 {QStringLiteral("code"), problem.code},
                 {QStringLiteral("message"), problem.message},
                 {QStringLiteral("character"),
                  characters(setting.text, 0, problem.place.start) + 1}});
        }
    }
    return listing;
}

QStringList linesOf(const Rollout &rollout, const output::Terminal &terminal)
{
    QStringList lines;
    int count = 0;
    for (const auto &[kind, setting] : rollout.settings) {
        for (const Problem &problem : setting.problems) {
            if (++count > ShownProblems)
                continue;
            lines.append(headOf(setting, problem, terminal));
            const QStringList details = detailsOf(setting, problem, terminal);
            for (const QString &line : details)
                lines.append(Indentation + line);
        }
    }
    if (count > ShownProblems)
        lines.append(QStringLiteral("%1 are not shown")
                         .arg(counted(count - ShownProblems, QStringLiteral("more problem"))));
    return lines;
}

QString summaryOf(const Rollout &rollout)
{
    const QString subject =
        rollout.settings.size() == 1
            ? printable(rollout.settings.begin()->second.file)
            : counted(static_cast<int>(rollout.settings.size()), QStringLiteral("file"));
    QStringList parts;
    for (const Severity severity : {Severity::Error, Severity::Warning}) {
        const int count = countOf(rollout, severity);
        if (count > 0)
            parts.append(counted(count, nameOf(severity)));
    }
    if (!parts.isEmpty())
        return QStringLiteral("%1 in %2").arg(parts.join(QStringLiteral(", ")), subject);
    for (const auto &[kind, setting] : rollout.settings)
        parts.append(contentOf(setting));
    return QStringLiteral("%1: %2, no problems").arg(subject, parts.join(QStringLiteral(", ")));
}

int countOf(const Rollout &rollout, Severity severity)
{
    int count = 0;
    for (const auto &[kind, setting] : rollout.settings)
        count += static_cast<int>(
            std::count_if(setting.problems.cbegin(), setting.problems.cend(),
                          [&](const Problem &problem) { return problem.severity == severity; }));
    return count;
}

} // namespace defaults
