#include "planning/PlanLayout.h"

#include "output/Listing.h"
#include "output/TextWidth.h"

#include <QTextBoundaryFinder>

#include <algorithm>

namespace defaults {
namespace {

using output::textWidth;

constexpr int MarkWidth = 4; // two blanks, the mark, a blank
constexpr int Gap = 2;
constexpr int LongestName = 24;
constexpr int LeastRoom = 32;
constexpr int LeastRoomForValues = 18;
constexpr int Unlimited = 0;

const QString Arrow = QStringLiteral(" -> ");
const QChar Ellipsis(0x2026);

QString padded(const QString &text, int width)
{
    return text + QString(std::max(0, width - textWidth(text)), QLatin1Char(' '));
}

QString markOf(Mark mark)
{
    switch (mark) {
    case Mark::Added:
        return QStringLiteral("  + ");
    case Mark::Changed:
        return QStringLiteral("  ~ ");
    case Mark::Removed:
        return QStringLiteral("  - ");
    case Mark::Kept:
        return QStringLiteral("  = ");
    case Mark::Attention:
        break;
    }
    return QStringLiteral("  ! ");
}

QString painted(const output::Terminal &terminal, Mark mark, const QString &text)
{
    switch (mark) {
    case Mark::Added:
        return terminal.green(text);
    case Mark::Removed:
    case Mark::Attention:
        return terminal.red(text);
    case Mark::Changed:
        return terminal.yellow(text);
    case Mark::Kept:
        break;
    }
    return terminal.dim(text);
}

QString valueText(const QJsonValue &value)
{
    if (value.isNull())
        return QStringLiteral("new");
    const QString text = output::printable(output::displayText(value));
    return value.isString() ? QLatin1Char('"') + text + QLatin1Char('"') : text;
}

// What two values begin with in common, but for the last of it, which shows where they part.
QString commonBeginning(const QString &left, const QString &right)
{
    constexpr int Shown = 3;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, left);
    QList<int> ends{0};
    for (auto end = finder.toNextBoundary(); end != -1; end = finder.toNextBoundary()) {
        if (left.left(end) != right.left(end))
            break;
        ends.append(static_cast<int>(end));
    }
    return left.left(ends.at(std::max(0, static_cast<int>(ends.size()) - 1 - Shown)));
}

// Both values get their share; what one does not need is the other's. Where there is too little
// room, what they have in common goes first.
QString valuesText(const FieldChange &change, int room)
{
    QString before = valueText(change.before);
    QString after = valueText(change.after);
    if (room == Unlimited || textWidth(before + Arrow + after) <= room)
        return before + Arrow + after;
    const auto common = commonBeginning(before, after).size();
    if (common > 1) {
        before = Ellipsis + before.mid(common);
        after = Ellipsis + after.mid(common);
    }
    const int both = std::max(2, room - textWidth(Arrow));
    const int forBefore = std::max(both / 2, both - textWidth(after));
    before = output::elided(before, forBefore);
    return before + Arrow + output::elided(after, both - textWidth(before));
}

// Where there is no room for the values beside the names of the fields, they stand below them.
QStringList changeLines(const QList<FieldChange> &changes, int room)
{
    int fieldWidth = 0;
    for (const FieldChange &change : changes)
        fieldWidth = std::max(fieldWidth, textWidth(change.field));
    const int left = room - fieldWidth - Gap;
    QStringList lines;
    for (const FieldChange &change : changes) {
        if (room == Unlimited || left >= LeastRoomForValues)
            lines.append(padded(change.field, fieldWidth + Gap) +
                         valuesText(change, room == Unlimited ? Unlimited : left));
        else
            lines << output::elided(change.field, room)
                  << output::elided(valuesText(change, room), room);
    }
    return lines;
}

QStringList detailLines(const PlanEntry &entry, int room)
{
    QStringList lines;
    if (!entry.sentence.isEmpty())
        lines = wrapped(output::printable(entry.sentence), room);
    return lines + changeLines(entry.changes, room);
}

// Where things stand, in columns; a room of 0 is as much as is wanted.
struct Layout
{
    int nameWidth = 0;
    bool isBeside = true;
    int indent = 0;
    int room = Unlimited;
};

Layout layoutOf(const QList<PlanEntry> &entries, int width)
{
    Layout layout;
    for (const PlanEntry &entry : entries)
        layout.nameWidth = std::max(layout.nameWidth, textWidth(output::printable(entry.name)));
    layout.nameWidth = std::min(layout.nameWidth, LongestName);
    layout.indent = MarkWidth + layout.nameWidth + Gap;
    if (width == Unlimited)
        return layout;
    layout.isBeside = width - layout.indent >= LeastRoom;
    if (!layout.isBeside) {
        layout.nameWidth = std::max(1, width - MarkWidth);
        layout.indent = MarkWidth + Gap;
    }
    layout.room = std::max(1, width - layout.indent);
    return layout;
}

void layOut(QStringList &lines, const PlanEntry &entry, const Layout &layout,
            const output::Terminal &terminal)
{
    const QString name = output::elided(output::printable(entry.name), layout.nameWidth);
    const QString head = painted(terminal, entry.mark, markOf(entry.mark) + name);
    QStringList details = detailLines(entry, layout.room);
    const QString margin(layout.indent, QLatin1Char(' '));
    if (!layout.isBeside || details.isEmpty()) {
        lines.append(head);
    } else {
        const int gap = layout.nameWidth - textWidth(name) + Gap;
        lines.append(head + QString(gap, QLatin1Char(' ')) + details.takeFirst());
    }
    for (const QString &detail : std::as_const(details))
        lines.append(margin + detail);
}

} // namespace

QStringList laidOut(const QList<PlanEntry> &entries, const output::Terminal &terminal)
{
    const Layout layout = layoutOf(entries, terminal.width());
    QStringList lines;
    for (const PlanEntry &entry : entries)
        layOut(lines, entry, layout, terminal);
    return lines;
}

QStringList wrapped(const QString &text, int width, int indent)
{
    if (width == Unlimited)
        return {text};
    const QString margin(std::min(indent, width / 2), QLatin1Char(' '));
    QStringList lines;
    QString line;
    const QStringList words = text.split(QLatin1Char(' '));
    for (const QString &word : words) {
        const QString longer = line.isEmpty() ? word : line + QLatin1Char(' ') + word;
        if (!line.trimmed().isEmpty() && textWidth(longer) > width) {
            lines.append(line);
            line = margin + word;
        } else {
            line = longer;
        }
        line = output::elided(line, width);
    }
    return lines << line;
}

} // namespace defaults
