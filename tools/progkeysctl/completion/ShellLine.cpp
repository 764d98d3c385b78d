#include "completion/ShellLine.h"

#include <algorithm>
#include <cctype>

namespace completion {
namespace {

bool contains(const std::string &characters, char character)
{
    return characters.find(character) != std::string::npos;
}

// What a shell takes as it is, besides letters, digits and what is not ASCII.
bool isHarmless(char character)
{
    const auto byte = static_cast<unsigned char>(character);
    return byte >= 0x80 || std::isalnum(byte) != 0 || contains("_-./=:,+@%^", character);
}

// Whether a backslash is wanted before the character where that quote is open, or none.
bool wantsBackslash(char character, char quote)
{
    if (quote == '"')
        return contains("\\\"$`", character);
    return quote == 0 && !isHarmless(character);
}

std::string quoted(const std::string &text, char quote)
{
    std::string result;
    for (const char character : text) {
        if (quote == '\'' && character == '\'') {
            result += "'\\''";
            continue;
        }
        if (wantsBackslash(character, quote))
            result += '\\';
        result += character;
    }
    return result;
}

bool isNumber(const std::string &word)
{
    return !word.empty() && std::all_of(word.begin(), word.end(),
                                        [](unsigned char each) { return std::isdigit(each) != 0; });
}

} // namespace

ShellLine::ShellLine(const std::string &line)
{
    for (const char character : line)
        take(character);
}

void ShellLine::take(char character)
{
    if (m_isEscaped) {
        // Within double quotes a backslash counts before few characters only.
        if (m_quote == '"' && !wantsBackslash(character, '"'))
            append('\\', false);
        append(character, false);
        m_isEscaped = false;
    } else if (character == '\\' && m_quote != '\'') {
        m_isEscaped = true;
        m_hasWord = true;
    } else if (m_quote != 0) {
        takeQuoted(character);
    } else {
        takePlain(character);
    }
}

void ShellLine::takeQuoted(char character)
{
    if (character != m_quote) {
        append(character, false);
        return;
    }
    m_quote = 0;
    m_hasClosedQuote = true;
}

void ShellLine::takePlain(char character)
{
    if (character == '"' || character == '\'') {
        m_quote = character;
        m_quoteBegin = m_word.size();
        m_hasWord = true;
    } else if (contains(" \t\n", character)) {
        if (m_hasWord)
            endWord();
    } else if (character == '<' || character == '>') {
        redirect();
    } else {
        append(character, true);
    }
}

void ShellLine::append(char character, bool isPlain)
{
    m_word += character;
    m_isPlain += isPlain ? '1' : '0';
    m_hasWord = true;
}

void ShellLine::endWord()
{
    if (!m_isRedirection)
        m_before.push_back(m_word);
    m_word.clear();
    m_isPlain.clear();
    m_hasWord = m_isRedirection = m_hasClosedQuote = false;
}

// In `2>file` the number is no word of the command.
void ShellLine::redirect()
{
    if (m_hasWord && isNumber(m_word))
        m_isRedirection = true;
    if (m_hasWord)
        endWord();
    m_isRedirection = true;
}

std::string ShellLine::replacement(const std::string &whole, const std::string &breaks) const
{
    if (m_hasClosedQuote || m_isEscaped)
        return {};
    if (m_quote != 0)
        return quoted(whole.substr(m_quoteBegin), m_quote);
    std::size_t begin = 0;
    for (std::size_t i = 0; i < m_word.size(); ++i)
        if (m_isPlain[i] == '1' && contains(breaks, m_word[i]))
            begin = i + 1;
    return quoted(whole.substr(begin), 0);
}

} // namespace completion
