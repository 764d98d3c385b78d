#include "defaults/RecordChecks.h"

#include "defaults/FieldCount.h"
#include "output/Text.h"
#include "records/Key.h"

#include <algorithm>

namespace defaults {
namespace {

using provisioning::Record;

constexpr int PositionField = 3;
constexpr int KeyTypeField = 5;

bool isLineBreak(QChar c)
{
    return c == QLatin1Char('\n') || c == QLatin1Char('\r');
}

QString textOf(const Setting &setting, const Record &record)
{
    return setting.text.mid(record.start, record.length);
}

bool isBlank(const Setting &setting, const Record &record)
{
    const QString text = textOf(setting, record);
    return std::all_of(text.cbegin(), text.cend(), isLineBreak);
}

void add(Setting &setting, Finding finding, const QString &message)
{
    finding.message = message;
    setting.findings.append(finding);
}

void addEmptyRecord(Setting &setting, const Record &record)
{
    Finding finding = problem(Severity::Warning, "empty-record", record);
    finding.place = {std::max(0, record.start - 1), 1};
    add(setting, finding, QStringLiteral("record %1 is empty: remove a `#`").arg(record.number));
}

void checkSign(Setting &setting, const Record &record, int field, int number)
{
    const bool isOfKeys = setting.kind == Kind::Keys;
    if (isOfKeys && field == PositionField && number < 0)
        add(setting, problem(Severity::Warning, "negative-position", record, field),
            QStringLiteral("the position %1 is negative").arg(number));
    if (isOfKeys && field == KeyTypeField && number != KeyType::Set &&
        number != KeyType::AddOnModule)
        add(setting, problem(Severity::Warning, "unknown-key-type", record, field),
            QStringLiteral("the key type %1 is neither 0, the set, nor 1, an add-on module")
                .arg(number));
}

void checkNumber(Setting &setting, const Record &record, int field)
{
    const QString &text = record.fields.at(field - 1).text;
    const QString title = fieldNames(setting.kind).at(field - 1).title;
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    if (isNumber)
        checkSign(setting, record, field, number);
    else if (text.trimmed().isEmpty())
        add(setting, problem(Severity::Warning, "empty-number", record, field),
            QStringLiteral("the %1 is empty and becomes 0").arg(title));
    else
        add(setting, problem(Severity::Error, "not-a-number", record, field),
            QStringLiteral("the %1 %2 is not a 32-bit decimal number and becomes 0")
                .arg(title, output::quoted(text)));
}

void checkIdentifier(Setting &setting, const Record &record)
{
    if (!identifierOf(record).isEmpty())
        return;
    add(setting, problem(Severity::Error, "empty-identifier", record, 1),
        setting.kind == Kind::Actions
            ? QStringLiteral("the identifier is empty: the action overwrites every action that "
                             "users made")
            : QStringLiteral("the identifier is empty: the key counts as made by a user, and each "
                             "start adds one more"));
}

void checkWord(Setting &setting, const Record &record, int field, const QString &word,
               const QString &sign)
{
    const Span place = spanOf(record.fields.at(field - 1));
    const QString text = setting.text.mid(place.start, place.length);
    const auto at = text.indexOf(word);
    if (at < 0)
        return;
    Finding finding = problem(Severity::Error, "placeholder-word", record, field);
    finding.place = {place.start + static_cast<int>(at), static_cast<int>(word.size())};
    add(setting, finding,
        QStringLiteral("the phone reads the word `%1` as a %2: use another spelling")
            .arg(word, sign));
}

void checkWords(Setting &setting, const Record &record)
{
    for (int field = 1; field <= record.fields.size(); ++field) {
        checkWord(setting, record, field, QStringLiteral("escComa"), QStringLiteral("comma"));
        checkWord(setting, record, field, QStringLiteral("escSharp"), QStringLiteral("hash"));
    }
}

// One problem for the whole text: a tool that breaks lines does so after each record. In a refused
// record the problem is the number of fields.
void checkLineBreaks(Setting &setting)
{
    QList<int> places;
    bool isInIdentifier = false;
    for (const Record &record : std::as_const(setting.records)) {
        const QString text = textOf(setting, record);
        const auto at = std::find_if(text.cbegin(), text.cend(), isLineBreak) - text.cbegin();
        if (at == text.size() || (!record.isAccepted() && !isBlank(setting, record)))
            continue;
        places.append(record.start + static_cast<int>(at));
        isInIdentifier = isInIdentifier || (at == 0 && record.isAccepted());
    }
    if (places.isEmpty())
        return;
    Finding finding = problemAt(setting, isInIdentifier ? Severity::Error : Severity::Warning,
                                "line-break", {places.first(), 1});
    QString message = QStringLiteral("%1, contains a line break, which becomes part of the text")
                          .arg(describeField(setting.kind, finding.field));
    if (places.size() > 1)
        message += QStringLiteral("; %1 records contain line breaks").arg(places.size());
    add(setting, finding, message);
}

void checkRecord(Setting &setting, const Record &record)
{
    if (!record.isAccepted()) {
        setting.findings.append(wrongFieldCount(setting, record));
        return;
    }
    checkIdentifier(setting, record);
    for (int field = 1; field <= provisioning::FieldCount; ++field) {
        if (fieldNames(setting.kind).at(field - 1).isNumber)
            checkNumber(setting, record, field);
    }
}

} // namespace

QString identifierOf(const Record &record)
{
    const QString &text = record.fields.first().text;
    const auto start = std::find_if_not(text.cbegin(), text.cend(), isLineBreak);
    return text.mid(static_cast<int>(std::distance(text.cbegin(), start)));
}

void checkRecords(Setting &setting)
{
    const QList<Record> records = setting.records;
    for (const Record &record : records) {
        if (record.length == 0)
            addEmptyRecord(setting, record);
        else if (!isBlank(setting, record))
            checkRecord(setting, record);
        checkWords(setting, record);
    }
    checkLineBreaks(setting);
}

} // namespace defaults
