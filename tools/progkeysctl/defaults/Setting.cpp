#include "defaults/Setting.h"

#include "files/Utf8.h"

#include <QJsonDocument>

#include <algorithm>

namespace defaults {
namespace {

const QByteArray ByteOrderMark = QByteArrayLiteral("\xef\xbb\xbf");
constexpr int BytesAfterLead = 3; // in one character of UTF-8

bool continuesCharacter(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xc0U) == 0x80U;
}

// The first invalid byte: where decoding and encoding again changes the bytes.
int firstBadByte(const QByteArray &bytes, const QByteArray &again)
{
    const auto differing =
        std::mismatch(bytes.cbegin(), bytes.cend(), again.cbegin(), again.cend());
    int index = static_cast<int>(std::distance(again.cbegin(), differing.second));
    for (int back = 0; back < BytesAfterLead && index < again.size() && index > 0 &&
                       continuesCharacter(again.at(index));
         ++back)
        --index;
    return index;
}

bool isUtf16(const QByteArray &bytes)
{
    constexpr int LeastShare = 3; // western text has a null in every second byte
    return bytes.startsWith("\xff\xfe") || bytes.startsWith("\xfe\xff") ||
           bytes.count('\0') * LeastShare > bytes.size();
}

Finding problemOfFile(const char *code)
{
    Finding finding;
    finding.code = QString::fromLatin1(code);
    return finding;
}

// A text that is not UTF-8 is not checked further: every other problem may follow from this one.
bool hasWrongEncoding(Setting &setting, const QByteArray &bytes, int skipped)
{
    const QByteArray again = setting.text.toUtf8();
    if (isUtf16(bytes)) {
        Finding finding = problemOfFile("not-utf8");
        finding.message = QStringLiteral("the file is UTF-16: save it as UTF-8");
        setting.findings.append(finding);
        return true;
    }
    if (again == bytes)
        return false;
    const int bad = firstBadByte(bytes, again);
    const int start = static_cast<int>(files::decodeUtf8(again.left(bad)).size());
    Finding finding = problemAt(setting, Severity::Error, "not-utf8", {start, 1});
    finding.message = QStringLiteral("byte %1, 0x%2, is not UTF-8: save the file as UTF-8")
                          .arg(QString::number(skipped + bad + 1),
                               QString::fromLatin1(bytes.mid(bad, 1).toHex()));
    setting.findings.append(finding);
    return true;
}

// The form that the text has instead of that of a setting: "csv" or "json"; empty for neither.
QString otherForm(const Setting &setting)
{
    if (!QJsonDocument::fromJson(setting.text.toUtf8()).isNull())
        return QStringLiteral("json");
    constexpr int NamesOfHeader = 3;
    const QString header = setting.text.section(QLatin1Char('\n'), 0, 0);
    const QList<FieldName> &names = fieldNames(setting.kind);
    const auto found = std::count_if(names.cbegin(), names.cend(), [&](const FieldName &field) {
        return header.contains(field.name);
    });
    const bool isHeader = found >= NamesOfHeader && header.contains(QLatin1String("dmId"));
    return isHeader ? QStringLiteral("csv") : QString();
}

bool hasWrongFormat(Setting &setting)
{
    const QString form = otherForm(setting);
    if (form.isEmpty())
        return false;
    Finding finding = problemOfFile("wrong-format");
    finding.message = QStringLiteral("the file is %1, not the text of a setting: convert it with "
                                     "`progkeysctl defaults convert --from %2 --to text`")
                          .arg(form.toUpper(), form);
    setting.findings.append(finding);
    return true;
}

void findByteOrderMark(Setting &setting)
{
    Finding finding = problemOfFile("byte-order-mark");
    finding.message = QStringLiteral("the file begins with a byte order mark, U+FEFF, which the "
                                     "phone does not receive: save it without one");
    setting.findings.append(finding);
}

void findNull(Setting &setting)
{
    const auto at = setting.text.indexOf(QChar(0));
    if (at < 0)
        return;
    Finding finding =
        problemAt(setting, Severity::Error, "null-character", {static_cast<int>(at), 1});
    finding.message = QStringLiteral("the bus cannot carry U+0000");
    setting.findings.append(finding);
}

} // namespace

Setting readSetting(const QString &file, Kind kind, QByteArray bytes)
{
    if (bytes.endsWith('\n'))
        bytes.chop(1);
    Setting setting;
    setting.file = file;
    setting.kind = kind;
    const bool isMarked = bytes.startsWith(ByteOrderMark);
    const int skipped = isMarked ? static_cast<int>(ByteOrderMark.size()) : 0;
    bytes.remove(0, skipped);
    setting.text = files::decodeUtf8(bytes);
    if (!setting.text.isEmpty() && kind != Kind::Limit)
        setting.records = provisioning::parseText(setting.text);
    setting.isReadable = !hasWrongEncoding(setting, bytes, skipped) && !hasWrongFormat(setting);
    if (!setting.isReadable)
        return setting;
    if (isMarked)
        findByteOrderMark(setting);
    findNull(setting);
    return setting;
}

int characters(const QString &text, const Span &part)
{
    return static_cast<int>(text.mid(part.start, part.length).toUcs4().size());
}

Finding problem(Severity severity, const char *code, const provisioning::Record &record, int field)
{
    return {severity,  QString::fromLatin1(code),
            QString(), record.number,
            field,     field > 0 ? spanOf(record.fields.at(field - 1)) : spanOf(record)};
}

Finding problemAt(const Setting &setting, Severity severity, const char *code, const Span &place)
{
    Finding finding;
    for (const provisioning::Record &record : setting.records) {
        if (record.start > place.start)
            break;
        finding.record = record.number;
        finding.field = 0;
        for (const provisioning::Field &field : record.fields)
            finding.field += field.start <= place.start ? 1 : 0;
    }
    finding.severity = severity;
    finding.code = QString::fromLatin1(code);
    finding.place = place;
    return finding;
}

} // namespace defaults
