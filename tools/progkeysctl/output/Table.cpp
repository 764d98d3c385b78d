#include "output/Table.h"

#include "output/TextWidth.h"

#include <algorithm>
#include <numeric>

namespace output {
namespace {

const QString Gap = QStringLiteral("  ");
constexpr int GapWidth = 2;
// A column that would have to be narrower says nothing any more.
constexpr int LeastWidth = 4;

QString cellText(const QJsonObject &row, const Column &column)
{
    return printable(displayText(row.value(column.name)));
}

int tableWidth(const QList<int> &widths)
{
    const int gaps = static_cast<int>(widths.size()) - 1;
    return std::accumulate(widths.begin(), widths.end(), 0) + gaps * GapWidth;
}

QList<int> naturalWidths(const Listing &listing)
{
    QList<int> widths;
    for (const Column &column : listing.columns) {
        int width = textWidth(column.heading);
        for (const QJsonObject &row : listing.rows)
            width = std::max(width, textWidth(cellText(row, column)));
        widths.append(width);
    }
    return widths;
}

// Narrows the widest column by one until the table fits, or nothing can be narrowed; numbers are
// left whole, because a part of a number is another number. Whether it fits.
bool narrow(QList<int> &widths, const QList<Column> &columns, int limit)
{
    while (tableWidth(widths) > limit) {
        int *widest = nullptr;
        for (int place = 0; place < columns.size(); ++place)
            if (!columns.at(place).isNumber && widths.at(place) > LeastWidth &&
                (!widest || widths.at(place) > *widest))
                widest = &widths[place];
        if (!widest)
            return false;
        --*widest;
    }
    return true;
}

QString aligned(const QString &text, int width, bool isRight)
{
    const QString shown = elided(text, width);
    const QString padding(std::max(0, width - textWidth(shown)), QLatin1Char(' '));
    return isRight ? padding + shown : shown + padding;
}

QString withoutTrailingBlanks(QString line)
{
    while (line.endsWith(QLatin1Char(' ')))
        line.chop(1);
    return line;
}

template <typename Cell>
QString lineText(const QList<Column> &columns, const QList<int> &widths, Cell cell)
{
    QStringList parts;
    for (int place = 0; place < columns.size(); ++place)
        parts.append(
            aligned(cell(columns.at(place)), widths.at(place), columns.at(place).isNumber));
    return withoutTrailingBlanks(parts.join(Gap));
}

QString rowsText(const Listing &listing, const QList<int> &widths, const Terminal &terminal,
                 bool hasLegend)
{
    QString text;
    if (hasLegend && !listing.rows.isEmpty()) {
        const auto heading = [](const Column &column) { return column.heading; };
        text += terminal.bold(lineText(listing.columns, widths, heading)) + QLatin1Char('\n');
    }
    for (const QJsonObject &row : listing.rows) {
        const auto cell = [&row](const Column &column) { return cellText(row, column); };
        text += lineText(listing.columns, widths, cell) + QLatin1Char('\n');
    }
    return text;
}

QString rowsFieldByField(const Listing &listing, const Terminal &terminal)
{
    QStringList rows;
    for (const QJsonObject &row : listing.rows)
        rows.append(recordText(listing.columns, row, terminal));
    return rows.join(QLatin1Char('\n'));
}

} // namespace

QString tableText(const Listing &listing, const Terminal &terminal, bool hasLegend)
{
    QList<int> widths = naturalWidths(listing);
    const bool fits = terminal.width() == 0 || narrow(widths, listing.columns, terminal.width());
    QString text =
        fits ? rowsText(listing, widths, terminal, hasLegend) : rowsFieldByField(listing, terminal);
    if (hasLegend && !listing.legend.isEmpty())
        text += terminal.dim(listing.legend) + QLatin1Char('\n');
    return text;
}

QString recordText(const QList<Column> &columns, const QJsonObject &row, const Terminal &terminal)
{
    int headingWidth = 0;
    for (const Column &column : columns)
        headingWidth = std::max(headingWidth, textWidth(column.heading));
    QString text;
    for (const Column &column : columns) {
        QString value = cellText(row, column);
        const int room = terminal.width() - headingWidth - GapWidth;
        if (terminal.width() > 0 && !column.isNumber)
            value = elided(value, std::max(room, LeastWidth));
        const QString heading = aligned(column.heading, headingWidth, false);
        text += withoutTrailingBlanks(terminal.bold(heading) + Gap + value) + QLatin1Char('\n');
    }
    return text;
}

} // namespace output
