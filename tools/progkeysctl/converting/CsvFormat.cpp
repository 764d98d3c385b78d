#include "converting/Formats.h"
#include "files/Files.h"
#include "output/Output.h"
#include "output/Text.h"

#include <QRegularExpression>

#include <csv.h>

#include <algorithm>
#include <array>
#include <new>

namespace defaults {
namespace {

[[noreturn]] void throwInvalidLine(const QString &file, int line, const QString &message,
                                   const QString &advice)
{
    throw Failure{ExitStatus::InvalidText,
                  QStringLiteral("%1, line %2: %3").arg(file, QString::number(line), message),
                  advice};
}

// All rows of a spreadsheet, so that the place of a row is its line. Blanks are kept.
class CsvReader
{
public:
    explicit CsvReader(char delimiter)
    {
        if (csv_init(&m_parser, CSV_STRICT | CSV_STRICT_FINI | CSV_REPALL_NL) != 0)
            throw std::bad_alloc();
        csv_set_delim(&m_parser, static_cast<unsigned char>(delimiter));
        csv_set_space_func(&m_parser, [](unsigned char) { return 0; });
    }
    ~CsvReader() { csv_free(&m_parser); }
    CsvReader(const CsvReader &) = delete;
    CsvReader &operator=(const CsvReader &) = delete;

    QList<QStringList> read(const QByteArray &bytes, const QString &file);

private:
    static void endField(void *text, size_t size, void *reader);
    static void endRow(int end, void *reader);

    csv_parser m_parser{};
    QStringList m_row;
    QList<QStringList> m_rows;
    int m_lastEnd = 0;
};

QList<QStringList> CsvReader::read(const QByteArray &bytes, const QString &file)
{
    const auto size = static_cast<size_t>(bytes.size());
    if (csv_parse(&m_parser, bytes.constData(), size, endField, endRow, this) != size)
        throwInvalidLine(
            file, static_cast<int>(m_rows.size()) + 1, QStringLiteral("unexpected quote"),
            QStringLiteral("Quote the whole field, and write each quote in it twice."));
    if (csv_fini(&m_parser, endField, endRow, this) != 0)
        throwInvalidLine(file, static_cast<int>(m_rows.size()) + 1,
                         QStringLiteral("the closing quote is missing"), {});
    return m_rows;
}

void CsvReader::endField(void *text, size_t size, void *reader)
{
    auto &self = *static_cast<CsvReader *>(reader);
    self.m_row.append(files::decodeUtf8({static_cast<const char *>(text), static_cast<int>(size)}));
}

// Called for each character that ends a line; a line feed after a carriage return ends none.
void CsvReader::endRow(int end, void *reader)
{
    auto &self = *static_cast<CsvReader *>(reader);
    if (end == '\n' && self.m_lastEnd == '\r' && self.m_row.isEmpty()) {
        self.m_lastEnd = end;
        return;
    }
    self.m_rows.append(self.m_row);
    self.m_row.clear();
    self.m_lastEnd = end;
}

// What a header lacks, and what it has in addition; columns may have any order.
struct HeaderFaults
{
    QStringList missing;
    QStringList surplus;

    HeaderFaults(const QStringList &header, Kind kind) : surplus(header)
    {
        for (const QString &name : fieldNames(kind)) {
            if (!surplus.removeOne(name))
                missing.append(name);
        }
    }
};

Kind kindOf(const QStringList &header)
{
    return HeaderFaults(header, Kind::Keys).surplus.size() <
                   HeaderFaults(header, Kind::Actions).surplus.size()
               ? Kind::Keys
               : Kind::Actions;
}

// The most frequent delimiter of the header: the names of fields contain none.
char delimiterOf(const QByteArray &text)
{
    const QByteArray header = text.left(text.indexOf('\n'));
    const std::array<char, 3> delimiters{',', ';', '\t'};
    return *std::max_element(delimiters.begin(), delimiters.end(), [&](char left, char right) {
        return header.count(left) < header.count(right);
    });
}

void requireHeader(const QStringList &header, Kind kind, const QString &file)
{
    const HeaderFaults faults(header, kind);
    QStringList parts;
    if (!faults.missing.isEmpty())
        parts.append(QStringLiteral("missing: ") + faults.missing.join(QStringLiteral(", ")));
    if (!faults.surplus.isEmpty())
        parts.append(QStringLiteral("unknown or repeated: ") +
                     faults.surplus.join(QStringLiteral(", ")));
    if (!parts.isEmpty())
        throwInvalidLine(
            file, 1, QStringLiteral("invalid header: %1").arg(parts.join(QStringLiteral("; "))),
            QStringLiteral("The columns are %1 for actions and %2 for keys, separated by commas, "
                           "semicolons or tabs.")
                .arg(fieldNames(Kind::Actions).join(QLatin1Char(',')),
                     fieldNames(Kind::Keys).join(QLatin1Char(','))));
}

QStringList recordOf(const QStringList &row, const QStringList &header, Kind kind, int line,
                     const QString &file)
{
    if (row.size() != header.size())
        throwInvalidLine(
            file, line,
            QStringLiteral("%1 instead of %2")
                .arg(output::counted(static_cast<int>(row.size()), QStringLiteral("field")),
                     QString::number(header.size())),
            QStringLiteral("Quote a field that contains the delimiter."));
    QStringList record;
    for (const QString &name : fieldNames(kind))
        record.append(row.at(header.indexOf(name)));
    return record;
}

bool isEmpty(const QStringList &row)
{
    return std::all_of(row.cbegin(), row.cend(),
                       [](const QString &field) { return field.trimmed().isEmpty(); });
}

QByteArray csvLine(const QStringList &fields)
{
    static const QRegularExpression special(QStringLiteral("[,\"\r\n]"));
    QStringList written;
    for (QString field : fields) {
        // Some programs drop blanks at the ends of fields that are not quoted.
        const bool isQuoted = field.contains(special) || field != field.trimmed();
        field.replace(QLatin1Char('"'), QLatin1String("\"\""));
        written.append(isQuoted ? QStringLiteral("\"%1\"").arg(field) : field);
    }
    return written.join(QLatin1Char(',')).toUtf8() + "\r\n";
}

} // namespace

Records readCsv(const QByteArray &bytes, const QString &file, std::optional<Kind> kind)
{
    const QByteArray text = files::requireUtf8(bytes, file);
    const QList<QStringList> rows = CsvReader(delimiterOf(text)).read(text, file);
    const QStringList header = rows.value(0);
    Records records{kindOf(header), {}};
    requireHeader(header, records.kind, file);
    if (kind && *kind != records.kind)
        throwInvalidLine(
            file, 1, QStringLiteral("the columns are those of %1").arg(nameOf(records.kind)), {});
    QStringList skipped;
    for (int line = 2; line <= rows.size(); ++line) {
        const QStringList &row = rows.at(line - 1);
        if (isEmpty(row)) {
            skipped.append(QString::number(line));
            continue;
        }
        records.records.append(recordOf(row, header, records.kind, line, file));
        records.lines.append(line);
    }
    if (!skipped.isEmpty())
        output::warn(QStringLiteral("%1: skipped empty lines: %2")
                         .arg(file, skipped.join(QStringLiteral(", "))));
    return records;
}

QByteArray writeCsv(const Records &records)
{
    QByteArray text = csvLine(fieldNames(records.kind));
    for (const QStringList &record : records.records)
        text += csvLine(record);
    return text;
}

} // namespace defaults
