#include "defaults/CommaGuess.h"

#include <algorithm>
#include <limits>

namespace defaults {
namespace {

using provisioning::FieldCount;
using provisioning::Record;

// What speaks against a reading. Only the order of the sums matters.
namespace cost {
constexpr int Impossible = 1'000'000;
constexpr int NoNumber = 20;
constexpr int EmptyNumber = 3;
constexpr int NoBlankAfterTextComma = 6;
constexpr int TextCommaBesideNothing = 8;
constexpr int TextCommaBetweenUnlike = 3;
constexpr int LeadingBlank = 6;
constexpr int Unusual = 5;
constexpr int Known = -3;
constexpr int EscapedSeparator = 4;
constexpr int EscapedSeparatorBeforeBlank = 12;
} // namespace cost

constexpr int MostPieces = 24; // beyond that it is anybody's guess
constexpr int UsualShare = 5;  // of so many records one may be otherwise

// How unlikely a comma in the text of that field is: names and arguments have them, identifiers
// have not.
int commaCost(Kind kind, int field)
{
    static const std::array<int, FieldCount> actions{8, 0, 5, 5, 1, 0, 2};
    static const std::array<int, FieldCount> keys{2, 0, 0, 1, 0, 0, 0};
    return (kind == Kind::Actions ? actions : keys).at(static_cast<std::size_t>(field));
}

enum class Shape { Words, Digits, Assignment };

Shape shapeOf(const QString &text)
{
    const auto isDigit = [](QChar c) { return c.isDigit(); };
    if (!text.isEmpty() && std::all_of(text.cbegin(), text.cend(), isDigit))
        return Shape::Digits;
    return text.contains(QLatin1Char('=')) ? Shape::Assignment : Shape::Words;
}

// What stands between two commas, escaped or not.
struct Piece
{
    QString text;
    Span commaAfter;
    bool isEscaped = false; ///< that comma
};

QList<Piece> piecesOf(const QString &text, const Record &record)
{
    QList<Piece> pieces;
    for (const provisioning::Field &field : record.fields) {
        const Span place = spanOf(field);
        int from = place.start;
        for (int at = from; at < place.end(); ++at) {
            if (text.at(at) != QLatin1Char(','))
                continue;
            pieces.append({text.mid(from, at - 1 - from), {at - 1, 2}, true});
            from = at + 1;
        }
        pieces.append({text.mid(from, place.end() - from), {place.end(), 1}, false});
    }
    return pieces;
}

// Reads the pieces as the fields of a record, in the likeliest way.
class Reading
{
public:
    Reading(const Setting &setting, const Record &record, const Habits &habits)
        : m_kind(*setting.kind), m_habits(habits), m_pieces(piecesOf(setting.text, record)),
          m_hasTooMany(record.fields.size() > FieldCount)
    {
    }

    QList<GuessedComma> guess();

private:
    int count() const { return static_cast<int>(m_pieces.size()); }
    void find();
    int numberCost(int field, int from, int to) const;
    int textCost(int field, int from, int to) const;
    int fieldCost(int field, int from, int to) const;
    int textCommaCost(int field, int from, int piece) const;
    int separatorCost(int piece) const;
    QString joined(int first, int last) const;
    void addField(QList<GuessedComma> &commas, int field, int from, int to) const;

    Kind m_kind;
    const Habits &m_habits;
    QList<Piece> m_pieces;
    bool m_hasTooMany;
    // For so many fields and so many pieces: the least cost, and with how many pieces less the last
    // of these fields begins.
    QList<QList<int>> m_costs;
    QList<QList<int>> m_begins;
};

QList<GuessedComma> Reading::guess()
{
    QList<GuessedComma> commas;
    if (count() < FieldCount || count() > MostPieces)
        return commas;
    find();
    if (m_costs.at(FieldCount).at(count()) >= cost::Impossible)
        return commas;
    QList<int> begins{count()};
    for (int field = FieldCount; field > 0; --field)
        begins.prepend(m_begins.at(field).at(begins.first()));
    for (int field = 0; field < FieldCount; ++field)
        addField(commas, field, begins.at(field), begins.at(field + 1));
    return commas;
}

void Reading::find()
{
    QList<int> none;
    for (int pieces = 0; pieces <= count(); ++pieces)
        none.append(pieces == 0 ? 0 : cost::Impossible);
    m_costs.append(none);
    m_begins.append(none);
    none[0] = cost::Impossible;
    for (int field = 1; field <= FieldCount; ++field) {
        m_costs.append(none);
        m_begins.append(none);
        for (int to = field; to <= count(); ++to) {
            for (int from = field - 1; from < to; ++from) {
                const int all = m_costs.at(field - 1).at(from) + fieldCost(field - 1, from, to);
                if (all < m_costs.at(field).at(to)) {
                    m_costs[field][to] = all;
                    m_begins[field][to] = from;
                }
            }
        }
    }
}

int Reading::fieldCost(int field, int from, int to) const
{
    int sum = separatorCost(to - 1);
    for (int piece = from; piece + 1 < to; ++piece)
        sum += textCommaCost(field, from, piece);
    return sum + (fieldNames(m_kind).at(field).isNumber ? numberCost(field, from, to)
                                                        : textCost(field, from, to));
}

int Reading::numberCost(int field, int from, int to) const
{
    const QString text = m_pieces.at(from).text;
    bool isNumber = false;
    text.toInt(&isNumber);
    if (to - from == 1 && isNumber)
        return m_habits.isKnown(field, text) ? cost::Known : 0;
    return to - from == 1 && text.isEmpty() ? cost::EmptyNumber : cost::NoNumber;
}

int Reading::textCost(int field, int from, int to) const
{
    const QString text = m_pieces.at(from).text;
    if (text.startsWith(QLatin1Char(' ')))
        return cost::LeadingBlank;
    if (to - from > 1)
        return m_habits.isUsuallyEmpty(field) ? cost::Unusual : 0;
    if (text.isEmpty() ? m_habits.isUsuallyFilled(field) : m_habits.isUsuallyEmpty(field))
        return cost::Unusual;
    return !text.isEmpty() && m_habits.isKnown(field, text) ? cost::Known : 0;
}

// Of the comma after a piece, in a field that began with the piece `from`.
int Reading::textCommaCost(int field, int from, int piece) const
{
    if (m_pieces.at(piece).isEscaped)
        return 0;
    if (!m_hasTooMany)
        return cost::Impossible;
    const QString before = m_pieces.at(piece).text;
    const QString after = m_pieces.at(piece + 1).text;
    int sum = commaCost(m_kind, field);
    if (!after.startsWith(QLatin1Char(' ')))
        sum += cost::NoBlankAfterTextComma;
    if (before.isEmpty() || after.isEmpty())
        sum += cost::TextCommaBesideNothing;
    if (shapeOf(joined(from, piece)) != shapeOf(after))
        sum += cost::TextCommaBetweenUnlike;
    return sum;
}

QString Reading::joined(int first, int last) const
{
    QString text;
    for (int piece = first; piece <= last; ++piece)
        text += m_pieces.at(piece).text;
    return text;
}

int Reading::separatorCost(int piece) const
{
    if (!m_pieces.at(piece).isEscaped)
        return 0;
    if (m_hasTooMany)
        return cost::Impossible;
    return m_pieces.at(piece + 1).text.startsWith(QLatin1Char(' '))
               ? cost::EscapedSeparatorBeforeBlank
               : cost::EscapedSeparator;
}

void Reading::addField(QList<GuessedComma> &commas, int field, int from, int to) const
{
    for (int piece = from; piece < to; ++piece) {
        const bool isText = piece + 1 < to;
        if (isText != m_pieces.at(piece).isEscaped && piece + 1 < count())
            commas.append({m_pieces.at(piece).commaAfter, field + 1});
    }
}

} // namespace

Habits::Habits(const QList<Record> &records)
{
    for (const Record &record : records) {
        if (!record.isAccepted())
            continue;
        ++m_records;
        for (std::size_t field = 0; field < FieldCount; ++field) {
            const QString &text = record.fields.at(static_cast<int>(field)).text;
            m_empty.at(field) += text.isEmpty() ? 1 : 0;
            m_values.at(field).insert(text);
        }
    }
}

bool Habits::isUsuallyEmpty(int field) const
{
    const int filled = m_records - m_empty.at(static_cast<std::size_t>(field));
    return m_records > 1 && filled * UsualShare <= m_records;
}

bool Habits::isUsuallyFilled(int field) const
{
    return m_records > 1 && m_empty.at(static_cast<std::size_t>(field)) * UsualShare <= m_records;
}

bool Habits::isKnown(int field, const QString &value) const
{
    return m_values.at(static_cast<std::size_t>(field)).contains(value);
}

QList<GuessedComma> guessCommas(const Setting &setting, const Record &record, const Habits &habits)
{
    return Reading(setting, record, habits).guess();
}

} // namespace defaults
