#include "output/Table.h"

#include "text/Format.h"
#include "text/Text.h"

#include <libsmartcols.h>

#include <QRegularExpression>

#include <cstdlib>
#include <memory>
#include <new>

namespace output {
namespace {

struct TableDeleter
{
    void operator()(libscols_table *table) const { scols_unref_table(table); }
};
struct Freer
{
    void operator()(char *text) const { std::free(text); }
};

void require(bool isDone)
{
    if (!isDone)
        throw std::bad_alloc();
}

// A table of libsmartcols, whose functions fail only without memory.
class Table
{
public:
    Table(const Terminal &terminal, bool hasHeadings) : m_table(scols_new_table())
    {
        require(m_table != nullptr);
        require(scols_table_enable_noencoding(m_table.get(), 1) == 0); // all cells are printable
        require(scols_table_set_column_separator(m_table.get(), "  ") == 0);
        require(scols_table_enable_noheadings(m_table.get(), hasHeadings ? 0 : 1) == 0);
        require(scols_table_enable_colors(m_table.get(), terminal.hasColor() ? 1 : 0) == 0);
        const int force = terminal.width() > 0 ? SCOLS_TERMFORCE_ALWAYS : SCOLS_TERMFORCE_NEVER;
        require(scols_table_set_termforce(m_table.get(), force) == 0);
        if (terminal.width() > 0)
            require(scols_table_set_termwidth(m_table.get(),
                                              static_cast<std::size_t>(terminal.width())) == 0);
    }

    void addColumn(const QString &heading, int flags)
    {
        libscols_column *column =
            scols_table_new_column(m_table.get(), heading.toUtf8().constData(), 0, flags);
        require(column != nullptr);
        require(scols_cell_set_color(scols_column_get_header(column), "bold") == 0);
    }

    void addRow(const QStringList &cells, const QByteArray &color)
    {
        libscols_line *line = scols_table_new_line(m_table.get(), nullptr);
        require(line != nullptr);
        for (int place = 0; place < cells.size(); ++place)
            require(scols_line_set_data(line, static_cast<std::size_t>(place),
                                        cells.at(place).toUtf8().constData()) == 0);
        if (!color.isEmpty())
            require(scols_line_set_color(line, color.constData()) == 0);
    }

    QString text() const
    {
        char *text = nullptr;
        require(scols_print_table_to_string(m_table.get(), &text) == 0);
        const std::unique_ptr<char, Freer> owner(text);
        static const QRegularExpression trailingBlanks(" +\n"_s);
        QString result = QString::fromUtf8(text) + QLatin1Char('\n');
        return result.replace(trailingBlanks, "\n"_s);
    }

private:
    std::unique_ptr<libscols_table, TableDeleter> m_table;
};

QString cellText(const QJsonObject &row, const QString &field)
{
    return text::printable(displayText(row.value(field)));
}

// Numbers are aligned to the right; those that JSON cannot keep are strings. Only long texts are
// wrapped: a wrapped short text is hard to read and saves little.
int flagsOf(const Listing &listing, const QString &field)
{
    constexpr int LongestWhole = 12;
    bool hasNumber = false;
    bool hasText = false;
    bool isLong = false;
    for (const QJsonObject &row : listing.rows) {
        const QJsonValue value = row.value(field);
        bool isInteger = false;
        value.toString().toLongLong(&isInteger);
        hasNumber |= value.isDouble();
        hasText |= value.isString() && !isInteger;
        isLong |= text::textWidth(cellText(row, field)) > LongestWhole;
    }
    if (hasNumber && !hasText)
        return SCOLS_FL_RIGHT;
    return isLong ? SCOLS_FL_WRAP : 0;
}

} // namespace

QString tableText(const Listing &listing, const QStringList &fields, const Terminal &terminal,
                  bool hasLegend)
{
    Table table(terminal, hasLegend);
    for (const QString &field : fields)
        table.addColumn(hasLegend ? field : QString(), flagsOf(listing, field));
    for (const QJsonObject &row : listing.rows) {
        QStringList cells;
        for (const QString &field : fields)
            cells.append(cellText(row, field));
        table.addRow(cells, listing.colors.value(cells.value(0)));
    }
    QString text = listing.rows.isEmpty() ? QString() : table.text();
    if (hasLegend && !listing.legend.isEmpty())
        text += terminal.dim(listing.legend) + QLatin1Char('\n');
    return text;
}

QString recordText(const QJsonObject &row, const QStringList &fields, const Terminal &terminal)
{
    Table table(terminal, false);
    table.addColumn(QString(), 0);
    table.addColumn(QString(), SCOLS_FL_WRAP);
    for (const QString &field : fields)
        table.addRow({field, cellText(row, field)}, {});
    return table.text();
}

} // namespace output
