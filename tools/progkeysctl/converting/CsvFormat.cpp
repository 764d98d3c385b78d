#include "converting/Formats.h"
#include "files/Files.h"
#include "output/Output.h"
#include "text/Format.h"
#include "text/Text.h"

#include <QRegularExpression>

#include <algorithm>

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

// The names that are in one list only, in backquotes. Each name counts as often as it occurs.
QStringList surplus(QStringList names, const QStringList &others)
{
    for (const QString &other : others)
        names.removeOne(other);
    std::transform(names.begin(), names.end(), names.begin(), text::quoted);
    return names;
}

Kind kindOf(const QStringList &header)
{
    return surplus(header, fieldNames(Kind::Keys)).size() <
                   surplus(header, fieldNames(Kind::Actions)).size()
               ? Kind::Keys
               : Kind::Actions;
}

// The most frequent delimiter of the header: the names of fields contain none.
QChar delimiterOf(const QString &text)
{
    const QString header = text.section(QRegularExpression("[\r\n]"_s), 0, 0);
    QChar delimiter = QLatin1Char(',');
    for (const char each : {';', '\t'}) {
        if (header.count(QLatin1Char(each)) > header.count(delimiter))
            delimiter = QLatin1Char(each);
    }
    return delimiter;
}

// The columns may have any order.
void requireHeader(const QStringList &header, Kind kind, const QString &file)
{
    const QStringList missing = surplus(fieldNames(kind), header);
    const QStringList unknown = surplus(header, fieldNames(kind));
    QStringList parts;
    if (!missing.isEmpty())
        parts.append("missing: "_s + missing.join(", "_s));
    if (!unknown.isEmpty())
        parts.append("unknown or repeated: "_s + unknown.join(", "_s));
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

Records readCsv(const QByteArray &bytes, const QString &file)
{
    const QString text = files::decodeUtf8(files::requireUtf8(bytes, file));
    const QList<QStringList> rows = rowsOf(text, delimiterOf(text), file);
    const QStringList header = rows.value(0);
    Records records{kindOf(header), {}};
    requireHeader(header, records.kind, file);
    QStringList skipped;
    for (int line = 2; line <= rows.size(); ++line) {
        const QStringList &row = rows.at(line - 1);
        if (row.join(QString()).trimmed().isEmpty()) {
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
