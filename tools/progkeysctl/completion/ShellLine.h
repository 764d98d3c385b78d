#pragma once

#include <string>
#include <vector>

namespace completion {

/// A half-typed line, up to the cursor, in the words that the shell would make of it.
///
/// Quotes and backslashes are resolved; nothing is expanded. Redirections are left out.
class ShellLine
{
public:
    explicit ShellLine(const std::string &line);

    /// The words before the one at the cursor, the program's name first.
    const std::vector<std::string> &before() const { return m_before; }

    /// The word at the cursor, as far as it is typed; empty after a blank.
    const std::string &word() const { return m_word; }

    /// Whether that word says where a redirection goes.
    bool isRedirection() const { return m_isRedirection; }

    /// What the shell is to put in place of what it would replace of the word at the cursor, so
    /// that the word becomes `whole`, which begins with word(). `breaks` are the characters at
    /// which the shell begins a new piece of the word, COMP_WORDBREAKS. Empty if there is no
    /// telling, as after a quoted piece that is closed already.
    std::string replacement(const std::string &whole, const std::string &breaks) const;

private:
    void take(char character);
    void takeQuoted(char character);
    void takePlain(char character);
    void append(char character, bool isPlain);
    void endWord();
    void redirect();

    std::vector<std::string> m_before;
    std::string m_word;
    std::string m_isPlain; ///< for each character of the word, whether it stands there unquoted
    bool m_hasWord = false;
    bool m_isRedirection = false;
    bool m_hasClosedQuote = false;
    bool m_isEscaped = false;
    char m_quote = 0;             ///< the quote that is open, if one is
    std::size_t m_quoteBegin = 0; ///< how much of the word stands before it
};

} // namespace completion
