#pragma once

#include <QString>

namespace output {

/// When all streams use colours: "always", "never", or else on a terminal that supports them,
/// unless NO_COLOR is set.
void setColourChoice(const QString &choice);

/// What is known about the terminal, if any, that a stream goes to.
class Terminal
{
public:
    /// Of an open file descriptor.
    static Terminal of(int descriptor);

    /// Columns; 0 if there is no terminal and so no limit.
    int width() const { return m_width; }
    bool hasColour() const { return m_hasColour; }

    /// The text in a style or colour, if this terminal uses colours.
    QString bold(const QString &text) const { return styled(text, "1"); }
    QString dim(const QString &text) const { return styled(text, "2"); }
    QString red(const QString &text) const { return styled(text, "31"); }
    QString green(const QString &text) const { return styled(text, "32"); }
    QString yellow(const QString &text) const { return styled(text, "33"); }

private:
    QString styled(const QString &text, const char *code) const;

    bool m_hasColour = false;
    int m_width = 0;
};

} // namespace output
