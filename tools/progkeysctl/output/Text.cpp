#include "output/Text.h"

#include <QVector>

#include <algorithm>
#include <cwchar>

namespace output {
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
        return QStringLiteral("\\n");
    case '\r':
        return QStringLiteral("\\r");
    case '\t':
        return QStringLiteral("\\t");
    default:
        return codePoint < 0x100 ? QStringLiteral("\\x%1").arg(codePoint, 2, 16, QLatin1Char('0'))
                                 : QStringLiteral("\\u%1").arg(codePoint, 4, 16, QLatin1Char('0'));
    }
}

QString toText(char32_t codePoint)
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
        result += isHarmless(codePoint) ? toText(codePoint) : escape(codePoint);
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
        result += toText(codePoint);
    }
    return width > 0 ? result + Ellipsis : QString();
}

QString quoted(const QString &value)
{
    constexpr int Longest = 40;
    return QStringLiteral("`%1`").arg(elided(printable(value), Longest));
}

QString counted(int count, const QString &noun)
{
    return QStringLiteral("%1 %2%3").arg(QString::number(count), noun,
                                         count == 1 ? QString() : QStringLiteral("s"));
}

} // namespace output
