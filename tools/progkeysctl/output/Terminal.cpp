#include "output/Terminal.h"

#include "text/Format.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace output {
namespace {

QString colorChoice;

// If the terminal does not report its size, the width is COLUMNS, or 80.
int widthOf(int descriptor)
{
    constexpr int UsualWidth = 80;
    winsize size{};
    if (ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
        return size.ws_col;
    const int columns = qEnvironmentVariableIntValue("COLUMNS");
    return columns > 0 ? columns : UsualWidth;
}

bool supportsColor()
{
    return qEnvironmentVariableIsEmpty("NO_COLOR") && qgetenv("TERM") != "dumb";
}

} // namespace

void setColorChoice(const QString &choice)
{
    colorChoice = choice;
}

Terminal Terminal::of(int descriptor)
{
    const bool isTerminal = isatty(descriptor) == 1;
    Terminal terminal;
    terminal.m_width = isTerminal ? widthOf(descriptor) : 0;
    terminal.m_hasColor =
        colorChoice == "always"_s || (colorChoice != "never"_s && isTerminal && supportsColor());
    return terminal;
}

QString Terminal::styled(const QString &text, const char *code) const
{
    if (!m_hasColor || text.isEmpty())
        return text;
    return format("\x1b[%1m%2\x1b[0m", code, text);
}

} // namespace output
