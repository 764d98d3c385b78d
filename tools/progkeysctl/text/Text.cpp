#include "text/Text.h"

#include "text/Format.h"

#include <QVector>

#include <algorithm>
#include <cwchar>

namespace text {
namespace {

const QChar Ellipsis(0x2026);

bool changesDirection(uint codePoint)
{
    return codePoint == 0x061c || codePoint == 0x200e || codePoint == 0x200f ||
           (codePoint >= 0x202a && codePoint <= 0x202e) ||
           (codePoint >= 0x2066 && codePoint <= 0x2069);
}

bool isHarmless(uint codePoint)
{
    const QChar::Category category = QChar::category(codePoint);
    return category != QChar::Other_Control && category != QChar::Separator_Line &&
           category != QChar::Separator_Paragraph && !changesDirection(codePoint);
}

QString escape(uint codePoint)
{
    switch (codePoint) {
    case '\n':
        return "\\n"_s;
    case '\r':
        return "\\r"_s;
    case '\t':
        return "\\t"_s;
    default:
        return codePoint < 0x100 ? "\\x%1"_s.arg(codePoint, 2, 16, QLatin1Char('0'))
                                 : "\\u%1"_s.arg(codePoint, 4, 16, QLatin1Char('0'));
    }
}

QString fromCodePoint(char32_t codePoint)
{
    return QString::fromUcs4(&codePoint, 1);
}

int widthOf(uint codePoint)
{
    return std::max(0, wcwidth(static_cast<wchar_t>(codePoint)));
}

} // namespace

QString printable(const QString &text)
{
    QString result;
    const QVector<uint> codePoints = text.toUcs4();
    for (const uint codePoint : codePoints)
        result += isHarmless(codePoint) ? fromCodePoint(codePoint) : escape(codePoint);
    return result;
}

int textWidth(const QString &text)
{
    int width = 0;
    const QVector<uint> codePoints = text.toUcs4();
    for (const uint codePoint : codePoints)
        width += widthOf(codePoint);
    return width;
}

QString elided(const QString &text, int width)
{
    if (textWidth(text) <= width)
        return text;
    QString result;
    int used = 1;
    const QVector<uint> codePoints = text.toUcs4();
    for (const uint codePoint : codePoints) {
        used += widthOf(codePoint);
        if (used > width)
            break;
        result += fromCodePoint(codePoint);
    }
    return width > 0 ? result + Ellipsis : QString();
}

QString quoted(const QString &value)
{
    constexpr int Longest = 40;
    return format("`%1`", elided(printable(value), Longest));
}

QString counted(qlonglong count, const QString &noun)
{
    return format("%1 %2%3", count, noun, count == 1 ? QString() : "s"_s);
}

} // namespace text
