#include "text/Suggestion.h"

#include "text/Format.h"

#include <algorithm>
#include <vector>

namespace text {
namespace {

// The number of characters to insert, remove or replace to make one word of the other.
int distance(const QString &one, const QString &other)
{
    std::vector<int> previous(static_cast<std::size_t>(other.size()) + 1);
    for (std::size_t i = 0; i < previous.size(); ++i)
        previous[i] = static_cast<int>(i);
    for (const QChar character : one) {
        std::vector<int> current = {previous[0] + 1};
        for (std::size_t i = 1; i < previous.size(); ++i) {
            const bool isSame = other.at(static_cast<int>(i) - 1) == character;
            current.push_back(std::min(
                {previous[i] + 1, current[i - 1] + 1, previous[i - 1] + (isSame ? 0 : 1)}));
        }
        previous = current;
    }
    return previous.back();
}

QString mostSimilar(const QString &word, const QStringList &known)
{
    QString best;
    // Longer words may differ more.
    int bestDistance = std::max(1, static_cast<int>(word.size()) / 3) + 1;
    for (const QString &each : known) {
        const int current = distance(word.toLower(), each.toLower());
        if (current < bestDistance) {
            best = each;
            bestDistance = current;
        }
    }
    return best;
}

} // namespace

QString withSuggestion(const QString &word, const QStringList &known, const QString &advice)
{
    const QString similar = mostSimilar(word, known);
    return similar.isEmpty() ? advice : format("Did you mean \"%1\"? %2", similar, advice);
}

QString adviceOnField(const QString &name, const QStringList &fields)
{
    return withSuggestion(name, fields, format("The fields are %1.", fields.join(", "_s)));
}

} // namespace text
