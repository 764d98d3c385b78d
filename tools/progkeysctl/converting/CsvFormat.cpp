#include "converting/Formats.h"
#include "files/Files.h"
#include "output/Output.h"
#include "text/Format.h"
#include "text/Text.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>

namespace defaults {
namespace {

[[noreturn]] void throwInvalidLine(const QString &file, int line, const QString &message,
                                   const QString &advice)
{
    throw Failure{ExitStatus::InvalidText, format("%1, line %2: %3", file, line, message), advice};
}

// All rows of a spreadsheet, so that the place of a row is its line. Blanks are kept.
QList<QStringList> rowsOf(const QString &text, QChar delimiter, const QString &file)
{
    // A field and its end; a group that does not take part in the match is null.
    const QRegularExpression pattern(
        QStringLiteral(R"re(\G(?:"([^"]*+(?:""[^"]*+)*+)"|([^"%1\r\n]*+))(%1|\r\n|\r|\n|\z))re")
            .arg(delimiter));
    QList<QStringList> rows;
    QStringList row;
    int at = 0;
    while (at < text.size() || !row.isEmpty()) {
        const QRegularExpressionMatch field =
            pattern.match(text, at, QRegularExpression::NormalMatch,
                          QRegularExpression::DontCheckSubjectStringMatchOption);
        if (!field.hasMatch())
            throwInvalidLine(file, static_cast<int>(rows.size()) + 1,
                             "a quote is misplaced or missing"_s,
                             "Quote the whole field, and write each quote in it twice."_s);
        QString quotedText = field.captured(1);
        row.append(quotedText.isNull() ? field.captured(2) : quotedText.replace("\"\""_s, "\""_s));
        at = static_cast<int>(field.capturedEnd());
        if (field.captured(3) == delimiter)
            continue;
        rows.append(row);
        row.clear();
    }
    return rows;
}

// What a header lacks, and what it has in addition; columns may have any order.
struct HeaderFaults
{
    QStringList missing;
    QStringList surplus;
};

HeaderFaults faultsOf(const QStringList &header, Kind kind)
{
    HeaderFaults faults{{}, header};
    for (const QString &name : fieldNames(kind)) {
        if (!faults.surplus.removeOne(name))
            faults.missing.append(name);
    }
    return faults;
}

Kind kindOf(const QStringList &header)
{
    return faultsOf(header, Kind::Keys).surplus.size() <
                   faultsOf(header, Kind::Actions).surplus.size()
               ? Kind::Keys
               : Kind::Actions;
}

// The most frequent delimiter of the header: the names of fields contain none.
QChar delimiterOf(const QString &text)
{
    const QString header = text.section(QRegularExpression("[\r\n]"_s), 0, 0);
    const std::array<char, 3> delimiters{',', ';', '\t'};
    return QLatin1Char(
        *std::max_element(delimiters.begin(), delimiters.end(), [&](char left, char right) {
            return header.count(QLatin1Char(left)) < header.count(QLatin1Char(right));
        }));
}

QString listOf(const char *title, const QStringList &columns)
{
    QStringList names;
    for (const QString &column : columns)
        names.append(text::quoted(column));
    return QString::fromLatin1(title) + names.join(", "_s);
}

void requireHeader(const QStringList &header, Kind kind, const QString &file)
{
    const HeaderFaults faults = faultsOf(header, kind);
    QStringList parts;
    if (!faults.missing.isEmpty())
        parts.append(listOf("missing: ", faults.missing));
    if (!faults.surplus.isEmpty())
        parts.append(listOf("unknown or repeated: ", faults.surplus));
    if (!parts.isEmpty())
        throwInvalidLine(file, 1, format("invalid header: %1", parts.join("; "_s)),
                         format("The columns are %1 for actions and %2 for keys, separated by "
                                "commas, semicolons or tabs.",
                                fieldNames(Kind::Actions).join(QLatin1Char(',')),
                                fieldNames(Kind::Keys).join(QLatin1Char(','))));
}

QStringList recordOf(const QStringList &row, const QStringList &header, Kind kind, int line,
                     const QString &file)
{
    if (row.size() != header.size())
        throwInvalidLine(file, line,
                         format("%1 instead of %2",
                                text::counted(static_cast<int>(row.size()), "field"_s),
                                header.size()),
                         "Quote a field that contains the delimiter."_s);
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
    static const QRegularExpression special("[,\"\r\n]"_s);
    QStringList written;
    for (QString field : fields) {
        // Some programs drop blanks at the ends of fields that are not quoted.
        const bool isQuoted = field.contains(special) || field != field.trimmed();
        field.replace(QLatin1Char('"'), "\"\""_s);
        written.append(isQuoted ? format("\"%1\"", field) : field);
    }
    return written.join(QLatin1Char(',')).toUtf8() + "\r\n";
}

} // namespace

Records readCsv(const QByteArray &bytes, const QString &file, std::optional<Kind> kind)
{
    const QString text = files::decodeUtf8(files::requireUtf8(bytes, file));
    const QList<QStringList> rows = rowsOf(text, delimiterOf(text), file);
    const QStringList header = rows.value(0);
    Records records{kindOf(header), {}};
    requireHeader(header, records.kind, file);
    if (kind && *kind != records.kind)
        throwInvalidLine(file, 1, format("the columns are those of %1", nameOf(records.kind)), {});
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
        output::warn(format("%1: skipped empty lines: %2", file, skipped.join(", "_s)));
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
