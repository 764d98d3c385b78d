#include "provisioning/RecordCheck.h"

namespace unit {
namespace {

using provisioning::Field;
using provisioning::FieldCount;
using provisioning::Record;

/// The position of a record or field in the text.
struct Place
{
    int start;
    int length;
};

// Checks that the places follow each other from `start` to `end`, with one separator between them.
QString faultInPlaces(const QList<Place> &places, const QString &text, int start, int end,
                      QLatin1Char separator)
{
    int next = start;
    for (const Place &place : places) {
        if (next > start && text.at(next - 1) != separator)
            return QStringLiteral("no separator before the place at %1").arg(place.start);
        if (place.start != next || place.length < 0 || place.start + place.length > end)
            return QStringLiteral("a place at %1 instead of %2").arg(place.start).arg(next);
        next = place.start + place.length + 1;
    }
    return next == end + 1 ? QString() : QStringLiteral("the places end at %1").arg(next - 1);
}

// Whether the text at a place is the hidden text, after its escapes are hidden.
bool holds(const Place &place, const QString &hidden, const QString &text)
{
    return plain::hideEscapes(text.mid(place.start, place.length)) == hidden;
}

QString faultInFields(const Record &record, const plain::Record &expected, const QString &text)
{
    if (record.fields.size() != expected.fields.size())
        return QStringLiteral("%1 fields").arg(record.fields.size());
    QList<Place> places;
    for (int index = 0; index < record.fields.size(); ++index) {
        const Field &field = record.fields.at(index);
        places.append({field.start, field.length});
        if (field.text != expected.fields.at(index))
            return QStringLiteral("another field: \"%1\"").arg(field.text);
        if (!holds(places.last(), expected.hiddenFields.at(index), text))
            return QStringLiteral("another field at the place of \"%1\"").arg(field.text);
    }
    return faultInPlaces(places, text, record.start, record.start + record.length,
                         QLatin1Char(','));
}

QString faultIn(const Record &record, const plain::Record &expected, int number,
                const QString &text)
{
    if (record.number != number)
        return QStringLiteral("numbered %1").arg(record.number);
    if (record.hidden != expected.hidden)
        return QStringLiteral("other hidden text: \"%1\"").arg(record.hidden);
    if (!holds({record.start, record.length}, record.hidden, text))
        return QStringLiteral("another record at its place");
    if (record.isAccepted() != (expected.fields.size() == FieldCount))
        return QStringLiteral("incorrectly accepted or refused");
    return faultInFields(record, expected, text);
}

} // namespace

QString faultIn(const QList<Record> &records, const QString &text)
{
    const QList<plain::Record> expected = plain::parseText(text);
    if (records.size() != expected.size())
        return QStringLiteral("%1 records instead of %2").arg(records.size()).arg(expected.size());
    QList<Place> places;
    for (int index = 0; index < records.size(); ++index) {
        const Record &record = records.at(index);
        const QString fault = faultIn(record, expected.at(index), index + 1, text);
        if (!fault.isEmpty())
            return QStringLiteral("record %1: %2").arg(QString::number(index + 1), fault);
        places.append({record.start, record.length});
    }
    return faultInPlaces(places, text, 0, static_cast<int>(text.size()), QLatin1Char('#'));
}

} // namespace unit
