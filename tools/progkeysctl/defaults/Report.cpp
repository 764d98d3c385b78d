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
    return setting.records.value(problem.place.record - 1);
}

// The hash before an empty record counts as its start.
int columnOf(const Setting &setting, const Problem &problem)
{
    return characters(setting.text, recordOf(setting, problem).start, problem.place.start) + 1;
}

void sayHead(const Setting &setting, const Problem &problem, output::Output &out)
{
    const Place &place = problem.place;
    const output::Terminal &terminal = out.terminal();
    const QString label = nameOf(problem.severity) + QLatin1Char(':');
    out.say(
        format("%1 %2 %3",
               terminal.bold(format("%1:%2:%3:%4:", printable(setting.file), place.record,
                                    place.field, columnOf(setting, problem))),
               problem.severity == Severity::Error ? terminal.red(label) : terminal.yellow(label),
               problem.message));
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
void sayExcerpt(const Setting &setting, const Problem &problem, int width, output::Output &out)
{
    const Record record = recordOf(setting, problem);
    const bool hasText = record.length > 0;
    const int from = hasText ? record.start : 0;
    const auto to = hasText ? from + record.length : static_cast<int>(setting.text.size());
    const Place &place = problem.place;
    const QString before = endOf(setting.text.mid(from, place.start - from), width / 2);
    const QString marked = printable(setting.text.mid(place.start, place.length));
    const QString after = printable(setting.text.mid(place.end(), to - place.end()));
    const QString line = text::elided(before + marked + after, width);
    const int start = textWidth(before);
    const int length = std::max(1, std::min(textWidth(marked), textWidth(line) - start));
    const QString mark = "^"_s.leftJustified(length, QLatin1Char('~'));
    out.say(Indentation + line);
    out.say(Indentation + QString(start, QLatin1Char(' ')) + out.terminal().green(mark));
}

void sayFields(const Setting &setting, const Record &record, int width, output::Output &out)
{
    constexpr int NameWidth = 12;
    constexpr int Shown = FieldCount + 3; // the last ones have no name
    const QStringList names = fieldNames(setting.kind);
    const QStringList texts = textsOf(record);
    for (int field = 0; field < Shown && (field < FieldCount || field < texts.size()); ++field) {
        const QString name = names.value(field, "-"_s).leftJustified(NameWidth);
        const QString text = printable(texts.value(field, "(missing)"_s));
        out.say(Indentation + text::elided(text.isEmpty() ? name.trimmed() : name + text, width));
    }
    if (texts.size() > Shown)
        out.say(Indentation + "..."_s);
}

void sayProblem(const Setting &setting, const Problem &problem, output::Output &out)
{
    constexpr int UsualWidth = 80;
    constexpr int LeastWidth = 16;
    const int columns = out.terminal().width() > 0 ? out.terminal().width() : UsualWidth;
    const int width = std::max(columns - static_cast<int>(Indentation.size()), LeastWidth);
    const bool isOfRecord = problem.place.field == 0;
    sayHead(setting, problem, out);
    if (isOfRecord && problem.code == "field-count"_s)
        sayFields(setting, recordOf(setting, problem), width, out);
    else if (!isOfRecord || problem.place.length > 0)
        sayExcerpt(setting, problem, width, out);
}

QString contentOf(const Setting &setting)
{
    const auto count = static_cast<int>(setting.records.size());
    if (setting.kind == Kind::Limit)
        return "1 limit"_s;
    return counted(count, setting.kind == Kind::Actions ? "action"_s : "key"_s);
}

output::Listing listingOf(const Rollout &rollout)
{
    output::Listing listing;
    for (const auto &[kind, setting] : rollout.settings) {
        for (const Problem &problem : setting.problems) {
            const QString field = fieldNames(setting.kind).value(problem.place.field - 1);
            listing.rows.append(
                {{"file"_s, setting.file},
                 {"record"_s, problem.place.record},
                 {"field"_s, problem.place.field > 0 ? problem.place.field : QJsonValue()},
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

} // namespace

int countOf(const Rollout &rollout, Severity severity)
{
    int count = 0;
    for (const auto &[kind, setting] : rollout.settings)
        count += static_cast<int>(
            std::count_if(setting.problems.cbegin(), setting.problems.cend(),
                          [&](const Problem &problem) { return problem.severity == severity; }));
    return count;
}

void print(const Rollout &rollout, output::Output &out)
{
    if (!out.isForPeople()) {
        out.list(listingOf(rollout));
        return;
    }
    int count = 0;
    for (const auto &[kind, setting] : rollout.settings) {
        for (const Problem &problem : setting.problems) {
            if (++count <= ShownProblems)
                sayProblem(setting, problem, out);
        }
    }
    if (count > ShownProblems)
        out.say(format("%1 are not shown", counted(count - ShownProblems, "more problem"_s)));
    if (out.manner().hasLegend)
        out.say(summaryOf(rollout));
}

} // namespace defaults
