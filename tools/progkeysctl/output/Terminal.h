#pragma once

#include <QString>

namespace output {

/// When all streams use colors: "always", "never", or else on a terminal that supports them,
/// unless NO_COLOR is set.
void setColorChoice(const QString &choice);

/// What is known about the terminal, if any, that a stream goes to.
class Terminal
{
public:
    /// Of an open file descriptor.
    static Terminal of(int descriptor);

    /// Columns; 0 if there is no terminal and so no limit.
    int width() const { return m_width; }
    bool hasColor() const { return m_hasColor; }

    /// The text in a style or color, if this terminal uses colors.
    QString bold(const QString &text) const { return styled(text, "1"); }
    QString dim(const QString &text) const { return styled(text, "2"); }
    QString red(const QString &text) const { return styled(text, "31"); }
    QString green(const QString &text) const { return styled(text, "32"); }
    QString yellow(const QString &text) const { return styled(text, "33"); }

private:
    QString styled(const QString &text, const char *code) const;

    bool m_hasColor = false;
    int m_width = 0;
};

} // namespace output
