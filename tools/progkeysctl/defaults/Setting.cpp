#include "defaults/Setting.h"

#include "files/Files.h"
#include "outcome/Failure.h"
#include "text/Format.h"

#include <QJsonDocument>

#include <algorithm>

namespace defaults {
namespace {

// The first byte that is not UTF-8: there the text is encoded differently. -1 if there is none.
int invalidByte(const QString &text, const QByteArray &bytes)
{
    const QByteArray encoded = text.toUtf8();
    if (encoded == bytes)
        return -1;
    const auto isContinuation = [](char byte) { return (byte & 0xc0) == 0x80; };
    auto at = std::mismatch(encoded.begin(), encoded.end(), bytes.begin(), bytes.end()).first;
    while (isContinuation(*at))
        --at;
    return static_cast<int>(at - encoded.begin());
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

// "csv" or "json" if the file is one; else nothing.
QString otherFormat(const Setting &setting, const QByteArray &bytes)
{
    if (!QJsonDocument::fromJson(bytes).isNull())
        return "json"_s;
    return isCsv(setting) ? "csv"_s : QString();
}

// Other problems may follow from the first one, so only that one is reported.
void checkText(Setting &setting, const QByteArray &bytes)
{
    const int invalid = invalidByte(setting.text, bytes);
    const auto null = static_cast<int>(setting.text.indexOf(QChar(0)));
    const QString other = otherFormat(setting, bytes);
    if (invalid >= 0) {
        const auto character = static_cast<int>(files::decodeUtf8(bytes.left(invalid)).size());
        setting.addError("not-utf8", setting.placeOf(character),
                         format("byte %1, 0x%2, is not UTF-8: save the file as UTF-8", invalid + 1,
                                QString::fromLatin1(bytes.mid(invalid, 1).toHex())));
    } else if (null >= 0) {
        setting.addError("null-character", setting.placeOf(null),
                         "the bus cannot carry U+0000; if the file is UTF-16, save it as UTF-8"_s);
    } else if (setting.text.startsWith(QChar(QChar::ByteOrderMark))) {
        setting.addError(
            "byte-order-mark", {},
            "the file begins with a byte order mark, U+FEFF, which the phone does not receive: "
            "save it without one"_s);
    } else if (!other.isEmpty()) {
        setting.addError(
            "wrong-format", {},
            format("the file is %1, not the text of a setting: convert it with `progkeysctl "
                   "defaults convert --from %2 --to text`",
                   other.toUpper(), other));
    }
}

} // namespace

void Setting::addError(const char *code, const Place &place, const QString &message)
{
    problems.append({Severity::Error, QString::fromLatin1(code), place, message});
}

void Setting::addWarning(const char *code, const Place &place, const QString &message)
{
    problems.append({Severity::Warning, QString::fromLatin1(code), place, message});
}

Place Setting::placeOf(int character) const
{
    Place place{1, 0, character, 1};
    for (const provisioning::Record &record : records) {
        if (record.start > character)
            break;
        place.record = record.number;
        place.field = static_cast<int>(
            std::count_if(record.fields.cbegin(), record.fields.cend(),
                          [&](const auto &field) { return field.start <= character; }));
    }
    return place;
}

Setting settingOf(const QString &file, Kind kind, const QString &text)
{
    const bool hasRecords = !text.isEmpty() && kind != Kind::Limit;
    return {file,
            kind,
            text,
            hasRecords ? provisioning::parseText(text) : QList<provisioning::Record>(),
            {}};
}

Setting readSetting(const QString &file, Kind kind, QByteArray bytes)
{
    if (bytes.endsWith('\n'))
        bytes.chop(1);
    Setting setting = settingOf(file, kind, files::decodeUtf8(bytes));
    checkText(setting, bytes);
    return setting;
}

void requireReadable(const Setting &setting)
{
    if (!setting.problems.isEmpty())
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

} // namespace defaults
