#include "defaults/Excerpt.h"

#include "output/TextWidth.h"

#include <QTextBoundaryFinder>

#include <algorithm>

namespace defaults {
namespace {

const QChar Ellipsis(0x2026);

// What a terminal cannot show in part.
struct Cell
{
    QString shown;
    int width = 0;
    Span place;
};

QList<Cell> cellsOf(const QString &text, const Span &part)
{
    QList<Cell> cells;
    const QString line = text.mid(part.start, part.length);
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, line);
    auto from = finder.position();
    for (auto to = finder.toNextBoundary(); to != -1; to = finder.toNextBoundary()) {
        const QString shown = output::printable(line.mid(from, to - from));
        cells.append({shown,
                      output::textWidth(shown),
                      {part.start + static_cast<int>(from), static_cast<int>(to - from)}});
        from = to;
    }
    return cells;
}

// What could be shown at most; a record may be far longer than a line.
Span nearby(const Finding &finding, int width)
{
    constexpr int UnitsAColumn = 8;
    const Span &shown = finding.shown;
    const int start = std::max(shown.start, finding.place.start - width * UnitsAColumn);
    const int end = std::min(shown.end(), finding.place.start + width * UnitsAColumn);
    return {start, std::max(end - start, 0)};
}

// Cells from `first` up to `end`, which is not among them.
struct Window
{
    int first = 0;
    int end = 0;
};

class Excerpter
{
public:
    Excerpter(const QString &text, const Finding &finding, int width)
        : m_finding(finding), m_part(nearby(finding, width)), m_cells(cellsOf(text, m_part)),
          m_width(width)
    {
    }

    Excerpt excerpt() const;

private:
    int count() const { return static_cast<int>(m_cells.size()); }
    int cellAt(int index) const;
    int widthOf(const Window &window) const;
    bool fits(const Window &window) const { return widthOf(window) <= m_width; }
    Window window() const;
    void mark(QString &marks, const Span &place, const Window &window) const;
    int columnOf(int cell, const Window &window) const;

    const Finding &m_finding;
    Span m_part;
    QList<Cell> m_cells;
    int m_width;
};

// The cell of a character of the text, or the one behind the last.
int Excerpter::cellAt(int index) const
{
    const auto isBefore = [](const Cell &cell, int value) { return cell.place.end() <= value; };
    return static_cast<int>(std::lower_bound(m_cells.cbegin(), m_cells.cend(), index, isBefore) -
                            m_cells.cbegin());
}

int Excerpter::widthOf(const Window &window) const
{
    int width = (window.first > 0 ? 1 : 0) + (window.end < count() ? 1 : 0);
    for (int cell = window.first; cell < window.end; ++cell)
        width += m_cells.at(cell).width;
    return width;
}

// Grows around the place, to both sides alike as long as there is something on both.
Window Excerpter::window() const
{
    const int place = cellAt(m_finding.place.start);
    Window window{place, std::min(place + 1, count())};
    const int placeEnd = cellAt(m_finding.place.end());
    while (window.end < placeEnd && fits({window.first, window.end + 1}))
        ++window.end;
    const Window whole{0, count()};
    if (fits(whole))
        return whole;
    for (bool hasGrown = true; hasGrown;) {
        hasGrown = false;
        if (window.first > 0 && fits({window.first - 1, window.end})) {
            --window.first;
            hasGrown = true;
        }
        if (window.end < count() && fits({window.first, window.end + 1})) {
            ++window.end;
            hasGrown = true;
        }
    }
    return window;
}

int Excerpter::columnOf(int cell, const Window &window) const
{
    int column = window.first > 0 ? 1 : 0;
    for (int each = window.first; each < cell; ++each)
        column += m_cells.at(each).width;
    return column;
}

void Excerpter::mark(QString &marks, const Span &place, const Window &window) const
{
    const int first = cellAt(place.start);
    if (first < window.first || (first >= window.end && first < count()))
        return;
    const int begin = columnOf(first, window);
    const int end = columnOf(std::min(cellAt(place.end()), window.end), window);
    const int length = std::max(end - begin, 1);
    if (marks.size() < begin + length)
        marks = marks.leftJustified(begin + length);
    marks.replace(begin, length, QStringLiteral("^").leftJustified(length, QLatin1Char('~')));
}

Excerpt Excerpter::excerpt() const
{
    const Window shown = window();
    Excerpt excerpt;
    for (int cell = shown.first; cell < shown.end; ++cell)
        excerpt.text += m_cells.at(cell).shown;
    if (shown.first > 0)
        excerpt.text.prepend(Ellipsis);
    if (shown.end < count())
        excerpt.text.append(Ellipsis);
    for (const Span &place : m_finding.alsoMarked) {
        if (place.start >= m_part.start && place.start < m_part.end())
            mark(excerpt.marks, place, shown);
    }
    mark(excerpt.marks, m_finding.place, shown);
    return excerpt;
}

} // namespace

Excerpt excerptOf(const QString &text, const Finding &finding, int width)
{
    return Excerpter(text, finding, width).excerpt();
}

} // namespace defaults
