#include "output/TextWidth.h"

#include <QTextBoundaryFinder>
#include <QVector>

#include <algorithm>
#include <cwchar>

namespace output {
namespace {

const QChar Ellipsis(0x2026);

// A character of the writing system may be several code points. Those that stand beside each other,
// as in Thai and the scripts of India, each take their columns; what joins a picture takes none.
int graphemeWidth(const QString &grapheme)
{
    constexpr int Wide = 2;
    int width = 0;
    const QVector<uint> codePoints = grapheme.toUcs4();
    for (const uint codePoint : codePoints) {
        const int own = wcwidth(static_cast<wchar_t>(codePoint));
        if (own == Wide)
            return Wide;
        width += std::max(0, own);
    }
    return width;
}

template <typename Visit>
void forEachGrapheme(const QString &text, Visit visit)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    auto from = finder.position();
    for (auto to = finder.toNextBoundary(); to != -1; to = finder.toNextBoundary()) {
        if (!visit(text.mid(from, to - from)))
            return;
        from = to;
    }
}

QString prefix(const QString &text, int width)
{
    QString result;
    int used = 0;
    forEachGrapheme(text, [&](const QString &grapheme) {
        used += graphemeWidth(grapheme);
        if (used > width)
            return false;
        result += grapheme;
        return true;
    });
    return result;
}

bool turnsDirection(uint codePoint)
{
    return codePoint == 0x061c || codePoint == 0x200e || codePoint == 0x200f ||
           (codePoint >= 0x202a && codePoint <= 0x202e) ||
           (codePoint >= 0x2066 && codePoint <= 0x2069);
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

bool isHarmless(uint codePoint)
{
    const QChar::Category category = QChar::category(codePoint);
    return category != QChar::Other_Control && category != QChar::Separator_Line &&
           category != QChar::Separator_Paragraph && !turnsDirection(codePoint);
}

} // namespace

int textWidth(const QString &text)
{
    int width = 0;
    forEachGrapheme(text, [&width](const QString &grapheme) {
        width += graphemeWidth(grapheme);
        return true;
    });
    return width;
}

QString elided(const QString &text, int width)
{
    if (textWidth(text) <= width)
        return text;
    return width > 0 ? prefix(text, width - 1) + Ellipsis : QString();
}

QString printable(const QString &text)
{
    QString result;
    result.reserve(text.size());
    const QVector<uint> codePoints = text.toUcs4();
    for (const uint codePoint : codePoints) {
        if (!isHarmless(codePoint))
            result += escape(codePoint);
        else if (QChar::requiresSurrogates(codePoint))
            result.append(QChar(QChar::highSurrogate(codePoint)))
                .append(QChar(QChar::lowSurrogate(codePoint)));
        else
            result += QChar(codePoint);
    }
    return result;
}

} // namespace output
