#pragma once

#include "defaults/Setting.h"

#include <QSet>

#include <array>

namespace defaults {

/// What the accepted records of a text have in their fields, as a measure for the refused ones.
class Habits
{
public:
    explicit Habits(const QList<provisioning::Record> &records);

    /// Whether nearly every record has the field (from 0) empty, or nearly none.
    bool isUsuallyEmpty(int field) const;
    bool isUsuallyFilled(int field) const;
    bool isKnown(int field, const QString &value) const;

private:
    int m_records = 0;
    std::array<int, provisioning::FieldCount> m_empty{};
    std::array<QSet<QString>, provisioning::FieldCount> m_values;
};

/// A comma that was probably meant otherwise than it is read.
struct GuessedComma
{
    Span place; ///< the comma, with its backslash if it has one
    int field;  ///< from 1: which field it belongs to, or ends, if it is read the other way
};

/// For a record with too many fields, the commas that were probably meant as text; for one with too
/// few, the escaped commas that were probably meant as separators. What is a number, what the other
/// records have in a field and the blank after a comma in prose tell which. Empty if nothing of the
/// kind would make the record one of the right number of fields.
QList<GuessedComma> guessCommas(const Setting &setting, const provisioning::Record &record,
                                const Habits &habits);

} // namespace defaults
