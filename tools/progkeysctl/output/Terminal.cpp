#include "output/Terminal.h"

#include "text/Format.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace output {
namespace {

QString colourChoice;

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

bool supportsColour()
{
    return qEnvironmentVariableIsEmpty("NO_COLOR") && qgetenv("TERM") != "dumb";
}

} // namespace

void setColourChoice(const QString &choice)
{
    colourChoice = choice;
}

Terminal Terminal::of(int descriptor)
{
    const bool isTerminal = isatty(descriptor) == 1;
    Terminal terminal;
    terminal.m_width = isTerminal ? widthOf(descriptor) : 0;
    terminal.m_hasColour =
        colourChoice == "always"_s || (colourChoice != "never"_s && isTerminal && supportsColour());
    return terminal;
}

QString Terminal::styled(const QString &text, const char *code) const
{
    if (!m_hasColour || text.isEmpty())
        return text;
    return format("\x1b[%1m%2\x1b[0m", code, text);
}

} // namespace output
