#pragma once

#include <QString>

/// What is known about the terminal that a stream goes to, if it goes to one.
namespace output {

class Terminal
{
public:
    /// Of an open file descriptor.
    static Terminal of(int descriptor);

    /// One without colours, so many columns wide; 0 for none at all.
    static Terminal ofWidth(int width);

    bool isTerminal() const { return m_isTerminal; }

    /// Columns; 0 for no limit, where there is no terminal.
    int width() const { return m_width; }

    /// The text in bold, or dimmed, or as a fault, where that is wanted: on a terminal that can,
    /// and without NO_COLOR in the environment.
    QString bold(const QString &text) const;
    QString dim(const QString &text) const;
    QString red(const QString &text) const;
    QString green(const QString &text) const;
    QString yellow(const QString &text) const;

private:
    QString styled(const QString &text, const char *code) const;

    bool m_isTerminal = false;
    bool m_hasColour = false;
    int m_width = 0;
};

} // namespace output
