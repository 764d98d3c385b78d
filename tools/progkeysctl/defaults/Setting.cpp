#include "defaults/Setting.h"

#include "defaults/Utf8.h"

#include <algorithm>

namespace defaults {
namespace {

const QByteArray ByteOrderMark = QByteArrayLiteral("\xef\xbb\xbf");
constexpr int BytesAfterLead = 3; // a character of UTF-8 has at most so many

bool continuesCharacter(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xc0U) == 0x80U;
}

// The first byte that is part of no character, found where decoding and encoding again makes a
// difference.
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

void findBadBytes(Setting &setting, const QByteArray &bytes, int skipped)
{
    const QByteArray again = setting.text.toUtf8();
    if (again == bytes)
        return;
    const int bad = firstBadByte(bytes, again);
    const int start = static_cast<int>(decodeUtf8(again.left(bad)).size());
    Finding finding = complaintAt(setting, Severity::Error, "not-utf8", {start, 1});
    finding.message =
        QStringLiteral("byte %1 of the file, 0x%2, is not UTF-8: save the text as UTF-8")
            .arg(QString::number(skipped + bad + 1),
                 QString::fromLatin1(bytes.mid(bad, 1).toHex()));
    setting.findings.append(finding);
}

void findByteOrderMark(Setting &setting)
{
    Finding finding = complaintAt(setting, Severity::Error, "byte-order-mark", {0, 0});
    finding.message = QStringLiteral("the text begins with a byte order mark, U+FEFF, that does "
                                     "not come through: save it without one");
    setting.findings.append(finding);
}

// Only the first: where there is one, such as in a text of another encoding, there may be very
// many.
void findNull(Setting &setting)
{
    const auto at = setting.text.indexOf(QChar(0));
    if (at < 0)
        return;
    Finding finding =
        complaintAt(setting, Severity::Error, "null-character", {static_cast<int>(at), 1});
    finding.message = QStringLiteral("the bus cannot carry U+0000");
    setting.findings.append(finding);
}

} // namespace

Setting readSetting(const QString &file, std::optional<Kind> kind, QByteArray bytes)
{
    if (bytes.endsWith('\n'))
        bytes.chop(1);
    const bool isMarked = bytes.startsWith(ByteOrderMark);
    const int skipped = isMarked ? static_cast<int>(ByteOrderMark.size()) : 0;
    bytes.remove(0, skipped);
    Setting setting;
    setting.file = file;
    setting.kind = kind;
    setting.text = decodeUtf8(bytes);
    if (!setting.text.isEmpty())
        setting.records = provisioning::parseText(setting.text);
    if (isMarked)
        findByteOrderMark(setting);
    findBadBytes(setting, bytes, skipped);
    findNull(setting);
    return setting;
}

int characters(const QString &text, const Span &part)
{
    return static_cast<int>(text.mid(part.start, part.length).toUcs4().size());
}

Finding complaint(Severity severity, const char *code, const provisioning::Record &record,
                  int field)
{
    Finding finding;
    finding.severity = severity;
    finding.code = QString::fromLatin1(code);
    finding.record = record.number;
    finding.field = field;
    finding.place = field > 0 ? spanOf(record.fields.at(field - 1)) : spanOf(record);
    finding.shown = spanOf(record);
    return finding;
}

Finding complaintAt(const Setting &setting, Severity severity, const char *code, const Span &place)
{
    Finding finding;
    for (const provisioning::Record &record : setting.records) {
        if (record.start > place.start)
            break;
        finding = complaint(severity, code, record);
        for (int field = 1; field <= record.fields.size(); ++field) {
            if (record.fields.at(field - 1).start <= place.start)
                finding.field = field;
        }
    }
    finding.code = QString::fromLatin1(code);
    finding.severity = severity;
    finding.place = place;
    return finding;
}

} // namespace defaults
