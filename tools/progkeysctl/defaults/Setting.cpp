#include "defaults/Setting.h"

#include "files/Files.h"

#include <QJsonDocument>

#include <algorithm>

namespace defaults {
namespace {

const QByteArray ByteOrderMark = QByteArrayLiteral("\xef\xbb\xbf");

void add(Setting &setting, Problem problem, const char *code, const QString &message)
{
    problem.code = QString::fromLatin1(code);
    problem.message = message;
    setting.problems.append(problem);
}

bool isUtf16(const QByteArray &bytes)
{
    constexpr int LeastShare = 3; // western text has a null in every second byte
    return bytes.startsWith("\xff\xfe") || bytes.startsWith("\xfe\xff") ||
           bytes.count('\0') * LeastShare > bytes.size();
}

// Where the bytes are not UTF-8: at a replacement character that they do not contain. -1 if
// nowhere.
int invalidCharacter(const QString &text, const QByteArray &bytes)
{
    const QChar replacement(QChar::ReplacementCharacter);
    int at = static_cast<int>(text.indexOf(replacement));
    while (at >= 0 && bytes.mid(text.left(at).toUtf8().size()).startsWith("\xef\xbf\xbd"))
        at = static_cast<int>(text.indexOf(replacement, at + 1));
    return at;
}

// Every other problem of such a text may follow from this one.
bool hasWrongEncoding(Setting &setting, const QByteArray &bytes, int skipped)
{
    const int at = invalidCharacter(setting.text, bytes);
    if (isUtf16(bytes)) {
        add(setting, {}, "not-utf8", QStringLiteral("the file is UTF-16: save it as UTF-8"));
    } else if (at >= 0) {
        const int byte = static_cast<int>(setting.text.left(at).toUtf8().size());
        add(setting, problemAt(setting, {at, 1}), "not-utf8",
            QStringLiteral("byte %1, 0x%2, is not UTF-8: save the file as UTF-8")
                .arg(QString::number(skipped + byte + 1),
                     QString::fromLatin1(bytes.mid(byte, 1).toHex())));
    }
    return !setting.problems.isEmpty();
}

bool isCsv(const Setting &setting)
{
    constexpr int NamesOfHeader = 3;
    const QString header = setting.text.section(QLatin1Char('\n'), 0, 0);
    const QStringList names = fieldNames(setting.kind);
    return header.contains(QLatin1String("dmId")) &&
           std::count_if(names.cbegin(), names.cend(), [&](const QString &name) {
               return header.contains(name);
           }) >= NamesOfHeader;
}

bool hasWrongFormat(Setting &setting)
{
    const bool isJson = !QJsonDocument::fromJson(setting.text.toUtf8()).isNull();
    if (!isJson && !isCsv(setting))
        return false;
    const QString format = isJson ? QStringLiteral("json") : QStringLiteral("csv");
    add(setting, {}, "wrong-format",
        QStringLiteral("the file is %1, not the text of a setting: convert it with `progkeysctl "
                       "defaults convert --from %2 --to text`")
            .arg(format.toUpper(), format));
    return true;
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
    const auto null = static_cast<int>(setting.text.indexOf(QChar(0)));
    if (setting.isReadable && isMarked)
        add(setting, {}, "byte-order-mark",
            QStringLiteral("the file begins with a byte order mark, U+FEFF, which the phone does "
                           "not receive: save it without one"));
    if (setting.isReadable && null >= 0)
        add(setting, problemAt(setting, {null, 1}), "null-character",
            QStringLiteral("the bus cannot carry U+0000"));
    return setting;
}

Problem problemAt(const Setting &setting, const Span &place)
{
    Problem problem;
    for (const provisioning::Record &record : setting.records) {
        if (record.start > place.start)
            break;
        problem.record = record.number;
        problem.field = 0;
        for (const provisioning::Field &field : record.fields)
            problem.field += field.start <= place.start ? 1 : 0;
    }
    problem.place = place;
    return problem;
}

} // namespace defaults
