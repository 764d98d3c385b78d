#include "output/Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace output {
namespace {

constexpr int UsualWidth = 80;

// A terminal may not know its size; then COLUMNS says it, or it is taken to be the usual one.
int widthOf(int descriptor)
{
    winsize size{};
    if (ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
        return size.ws_col;
    const int columns = qEnvironmentVariableIntValue("COLUMNS");
    return columns > 0 ? columns : UsualWidth;
}

} // namespace

Terminal Terminal::of(int descriptor)
{
    Terminal terminal;
    terminal.m_isTerminal = isatty(descriptor) == 1;
    if (!terminal.m_isTerminal)
        return terminal;
    terminal.m_width = widthOf(descriptor);
    terminal.m_hasColour = qEnvironmentVariableIsEmpty("NO_COLOR") && qgetenv("TERM") != "dumb";
    return terminal;
}

Terminal Terminal::ofWidth(int width)
{
    Terminal terminal;
    terminal.m_isTerminal = width > 0;
    terminal.m_width = width;
    return terminal;
}

QString Terminal::bold(const QString &text) const
{
    return styled(text, "1");
}

QString Terminal::dim(const QString &text) const
{
    return styled(text, "2");
}

QString Terminal::red(const QString &text) const
{
    return styled(text, "31");
}

QString Terminal::green(const QString &text) const
{
    return styled(text, "32");
}

QString Terminal::yellow(const QString &text) const
{
    return styled(text, "33");
}

QString Terminal::styled(const QString &text, const char *code) const
{
    if (!m_hasColour || text.isEmpty())
        return text;
    return QStringLiteral("\x1b[%1m%2\x1b[0m").arg(QLatin1String(code), text);
}

} // namespace output
