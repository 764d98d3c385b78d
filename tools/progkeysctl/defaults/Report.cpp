#include "defaults/Report.h"

#include "text/Format.h"
#include "text/Text.h"

#include <algorithm>

namespace defaults {
namespace {

using provisioning::FieldCount;
using provisioning::Record;
using text::counted;
using text::printable;
using text::textWidth;

constexpr int ShownProblems = 50;
const QString Indentation = "    "_s;

QString nameOf(Severity severity)
{
    return severity == Severity::Error ? "error"_s : "warning"_s;
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
    const QString place = format("%1:%2:%3:%4:", printable(setting.file), problem.record,
                                 problem.field, columnOf(setting, problem));
    const QString label = nameOf(problem.severity) + QLatin1Char(':');
    return format("%1 %2 %3", terminal.bold(place),
                  problem.severity == Severity::Error ? terminal.red(label)
                                                      : terminal.yellow(label),
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
    const QString line = text::elided(before + marked + after, width);
    const int start = textWidth(before);
    const int length = std::max(1, std::min(textWidth(marked), textWidth(line) - start));
    return {line, QString(start, QLatin1Char(' ')) +
                      terminal.green("^"_s.leftJustified(length, QLatin1Char('~')))};
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
        const QString name = names.value(field, "-"_s);
        const QString text = field < size ? printable(record.fields.at(field).text) : "(missing)"_s;
        lines.append(text.isEmpty() ? name
                                    : text::elided(name.leftJustified(NameWidth) + text, width));
    }
    if (size > FieldCount + Surplus)
        lines.append("..."_s);
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
    return problem.code == "field-count"_s && problem.field == 0
               ? fieldByField(setting, recordOf(setting, problem), width)
               : excerptOf(setting, problem, width, terminal);
}

QString contentOf(const Setting &setting)
{
    const QString noun = setting.kind == Kind::Actions ? "action"_s
                         : setting.kind == Kind::Keys  ? "key"_s
                                                       : "limit"_s;
    const auto count = setting.kind == Kind::Limit ? 1 : setting.records.size();
    return counted(static_cast<int>(count), noun);
}

} // namespace

output::Listing listingOf(const Rollout &rollout)
{
    output::Listing listing;
    for (const auto &[kind, setting] : rollout.settings) {
        for (const Problem &problem : setting.problems) {
            const QString field = fieldNames(setting.kind).value(problem.field - 1);
            listing.rows.append(
                {{"file"_s, setting.file},
                 {"record"_s, problem.record},
                 {"field"_s, problem.field > 0 ? problem.field : QJsonValue()},
                 {"fieldName"_s, field.isEmpty() ? QJsonValue() : field},
                 {"column"_s, columnOf(setting, problem)},
                 {"severity"_s, nameOf(problem.severity)},
                 {"code"_s, problem.code},
                 {"message"_s, problem.message},
                 {"character"_s, characters(setting.text, 0, problem.place.start) + 1}});
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
        lines.append(format("%1 are not shown", counted(count - ShownProblems, "more problem"_s)));
    return lines;
}

QString summaryOf(const Rollout &rollout)
{
    const QString subject = rollout.settings.size() == 1
                                ? printable(rollout.settings.begin()->second.file)
                                : counted(static_cast<int>(rollout.settings.size()), "file"_s);
    QStringList parts;
    for (const Severity severity : {Severity::Error, Severity::Warning}) {
        const int count = countOf(rollout, severity);
        if (count > 0)
            parts.append(counted(count, nameOf(severity)));
    }
    if (!parts.isEmpty())
        return format("%1 in %2", parts.join(", "_s), subject);
    for (const auto &[kind, setting] : rollout.settings)
        parts.append(contentOf(setting));
    return format("%1: %2, no problems", subject, parts.join(", "_s));
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
