#include "converting/Table.h"
#include "defaults/Messages.h"
#include "defaults/Utf8.h"
#include "outcome/Failure.h"

#include <csv.h>

#include <algorithm>
#include <exception>

namespace defaults {
namespace {

[[noreturn]] void throwInvalid(const QString &message, const QString &advice = {})
{
    throw Failure{ExitStatus::InvalidText, message, advice};
}

// The rows of a text of comma-separated values. No blank is dropped, and a quote that stands where
// none may is a fault.
class CsvReader
{
public:
    CsvReader()
    {
        if (csv_init(&m_parser, CSV_STRICT | CSV_STRICT_FINI) != 0)
            throw std::bad_alloc();
        csv_set_space_func(&m_parser, [](unsigned char) { return 0; });
    }
    ~CsvReader() { csv_free(&m_parser); }
    CsvReader(const CsvReader &) = delete;
    CsvReader &operator=(const CsvReader &) = delete;

    QList<QStringList> read(const QByteArray &bytes, const QString &file);

private:
    static void endField(void *text, size_t size, void *reader);
    static void endRow(int, void *reader);

    csv_parser m_parser{};
    QStringList m_row;
    QList<QStringList> m_rows;
};

QList<QStringList> CsvReader::read(const QByteArray &bytes, const QString &file)
{
    const auto size = static_cast<size_t>(bytes.size());
    const size_t used = csv_parse(&m_parser, bytes.constData(), size, endField, endRow, this);
    if (used != size)
        throwInvalid(
            QStringLiteral("A quote in %1 stands where none may")
                .arg(lineOf(bytes, static_cast<qint64>(used), file)),
            QStringLiteral("A field with a quote in it is quoted as a whole, and the quote "
                           "written twice."));
    if (csv_fini(&m_parser, endField, endRow, this) != 0)
        throwInvalid(QStringLiteral("%1 ends within quotes").arg(file));
    return m_rows;
}

void CsvReader::endField(void *text, size_t size, void *reader)
{
    auto &self = *static_cast<CsvReader *>(reader);
    self.m_row.append(decodeUtf8({static_cast<const char *>(text), static_cast<int>(size)}));
}

void CsvReader::endRow(int, void *reader)
{
    auto &self = *static_cast<CsvReader *>(reader);
    self.m_rows.append(self.m_row);
    self.m_row.clear();
}

QStringList namesOf(Kind kind)
{
    QStringList names;
    for (const FieldName &field : fieldNames(kind))
        names.append(field.name);
    return names;
}

int knownColumns(Kind kind, const QStringList &header)
{
    const QStringList names = namesOf(kind);
    return static_cast<int>(std::count_if(
        header.cbegin(), header.cend(), [&](const QString &name) { return names.contains(name); }));
}

Kind kindOfHeader(const QStringList &header, const QString &file, std::optional<Kind> asked)
{
    const int actions = knownColumns(Kind::Actions, header);
    const int keys = knownColumns(Kind::Keys, header);
    if (actions == 0 && keys == 0)
        throwInvalid(QStringLiteral("%1 does not begin with a line of field names").arg(file),
                     QStringLiteral("It is %1 for actions, and %2 for keys.")
                         .arg(namesOf(Kind::Actions).join(QLatin1Char(',')),
                              namesOf(Kind::Keys).join(QLatin1Char(','))));
    const Kind kind = actions > keys ? Kind::Actions : Kind::Keys;
    if (asked && *asked != kind && actions != keys)
        throwInvalid(QStringLiteral("The columns of %1 are those of %2").arg(file, nameOf(kind)));
    return asked.value_or(kind);
}

// For each field of a record, its column.
QList<int> columnsOf(Kind kind, const QStringList &header, const QString &file)
{
    const QStringList names = namesOf(kind);
    for (const QString &name : header) {
        if (!names.contains(name))
            throwInvalid(
                QStringLiteral("%1 has a column %2, which is no field of %3")
                    .arg(file, quoted(name), nameOf(kind)),
                QStringLiteral("The fields are %1.").arg(names.join(QStringLiteral(", "))));
        if (header.count(name) > 1)
            throwInvalid(QStringLiteral("%1 has the column %2 twice").arg(file, quoted(name)));
    }
    QList<int> columns;
    for (const QString &name : names) {
        columns.append(static_cast<int>(header.indexOf(name)));
        if (columns.last() < 0)
            throwInvalid(QStringLiteral("%1 lacks the column %2 of %3")
                             .arg(file, quoted(name), nameOf(kind)));
    }
    return columns;
}

QStringList recordOf(const QStringList &row, const QList<int> &columns, int number,
                     const QString &file)
{
    if (row.size() != columns.size())
        throwInvalid(QStringLiteral("Record %1 of %2 has %3 instead of %4")
                         .arg(QString::number(number), file,
                              counted(static_cast<int>(row.size()), QStringLiteral("field")),
                              QString::number(columns.size())),
                     QStringLiteral("A field with a comma in it is quoted."));
    QStringList record;
    for (const int column : columns)
        record.append(row.at(column));
    return record;
}

// Blanks at an end are quoted for those programs that would drop them.
bool needsQuotes(const QString &field)
{
    const auto isSpecial = [](QChar c) {
        return c == QLatin1Char(',') || c == QLatin1Char('"') || c == QLatin1Char('\n') ||
               c == QLatin1Char('\r');
    };
    return field != field.trimmed() || std::any_of(field.cbegin(), field.cend(), isSpecial);
}

QByteArray csvLine(const QStringList &fields)
{
    QStringList written;
    for (QString field : fields) {
        const bool isQuoted = needsQuotes(field);
        field.replace(QLatin1Char('"'), QLatin1String("\"\""));
        written.append(isQuoted ? QStringLiteral("\"%1\"").arg(field) : field);
    }
    return written.join(QLatin1Char(',')).toUtf8() + "\r\n";
}

} // namespace

Table readCsv(const QByteArray &bytes, const QString &file, std::optional<Kind> kind)
{
    const QByteArray text = requireUtf8(bytes, file);
    const QList<QStringList> rows = CsvReader().read(text, file);
    const QStringList header = rows.isEmpty() ? QStringList() : rows.first();
    Table table{kindOfHeader(header, file, kind), {}};
    const QList<int> columns = columnsOf(table.kind, header, file);
    for (int row = 1; row < rows.size(); ++row)
        table.records.append(recordOf(rows.at(row), columns, row, file));
    return table;
}

QByteArray writeCsv(const Table &table)
{
    QByteArray text = csvLine(namesOf(table.kind));
    for (const QStringList &record : table.records)
        text += csvLine(record);
    return text;
}

} // namespace defaults
