#include "defaults/Setting.h"

#include "files/Files.h"
#include "outcome/Failure.h"
#include "text/Format.h"

#include <QJsonDocument>

#include <algorithm>

namespace defaults {
namespace {

// Where the bytes are not UTF-8: at a replacement character that they do not contain. -1 if
// nowhere.
int invalidCharacter(const QString &text, const QByteArray &bytes)
{
    const QChar replacement(QChar::ReplacementCharacter);
    int before = 0;
    qsizetype byte = 0;
    for (auto at = text.indexOf(replacement); at >= 0; at = text.indexOf(replacement, at + 1)) {
        byte += text.mid(before, at - before).toUtf8().size();
        before = static_cast<int>(at);
        if (bytes.mid(static_cast<int>(byte), 3) != "\xef\xbf\xbd")
            return before;
    }
    return -1;
}

bool isCsv(const Setting &setting)
{
    constexpr int NamesOfHeader = 3;
    const QString header = setting.text.section(QLatin1Char('\n'), 0, 0);
    const QStringList names = fieldNames(setting.kind);
    return header.contains("dmId"_s) &&
           std::count_if(names.cbegin(), names.cend(), [&](const QString &name) {
               return header.contains(name);
           }) >= NamesOfHeader;
}

void refuse(Setting &setting, Problem problem, const char *code, const QString &message)
{
    problem.code = QString::fromLatin1(code);
    problem.message = message;
    setting.problems.append(problem);
    setting.isReadable = false;
}

void refuseFormat(Setting &setting, const QString &name)
{
    refuse(setting, {}, "wrong-format",
           format("the file is %1, not the text of a setting: convert it with `progkeysctl "
                  "defaults convert --from %2 --to text`",
                  name.toUpper(), name));
}

// Other problems may follow from the first one, so only that one is reported.
void requireText(Setting &setting, const QByteArray &bytes)
{
    const int invalid = invalidCharacter(setting.text, bytes);
    const auto null = static_cast<int>(setting.text.indexOf(QChar(0)));
    if (invalid >= 0) {
        const int byte = static_cast<int>(setting.text.left(invalid).toUtf8().size());
        refuse(setting, problemAt(setting, {invalid, 1}), "not-utf8",
               format("byte %1, 0x%2, is not UTF-8: save the file as UTF-8", byte + 1,
                      QString::fromLatin1(bytes.mid(byte, 1).toHex())));
    } else if (null >= 0) {
        refuse(setting, problemAt(setting, {null, 1}), "null-character",
               "the bus cannot carry U+0000; if the file is UTF-16, save it as UTF-8"_s);
    } else if (setting.text.startsWith(QChar(QChar::ByteOrderMark))) {
        refuse(setting, {}, "byte-order-mark",
               "the file begins with a byte order mark, U+FEFF, which the phone does not receive: "
               "save it without one"_s);
    } else if (!QJsonDocument::fromJson(bytes).isNull()) {
        refuseFormat(setting, "json"_s);
    } else if (isCsv(setting)) {
        refuseFormat(setting, "csv"_s);
    }
}

} // namespace

Setting readSetting(const QString &file, Kind kind, QByteArray bytes)
{
    if (bytes.endsWith('\n'))
        bytes.chop(1);
    Setting setting;
    setting.file = file;
    setting.kind = kind;
    setting.text = files::decodeUtf8(bytes);
    if (!setting.text.isEmpty() && kind != Kind::Limit)
        setting.records = provisioning::parseText(setting.text);
    requireText(setting, bytes);
    return setting;
}

void requireReadable(const Setting &setting)
{
    if (!setting.isReadable)
        throw Failure{ExitStatus::InvalidText,
                      format("%1 cannot be delivered to a phone: %2", setting.file,
                             setting.problems.first().message),
                      format("\"progkeysctl defaults check %1\" shows where.", setting.file)};
}

QStringList textsOf(const provisioning::Record &record)
{
    QStringList texts;
    for (const provisioning::Field &field : record.fields)
        texts.append(field.text);
    return texts;
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
