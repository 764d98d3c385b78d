#include "cli/CommandLine.h"
#include "commands/Commands.h"
#include "outcome/Failure.h"
#include "output/Output.h"
#include "text/Format.h"

#include <QCoreApplication>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace {

// If a standard stream is closed, the next file or socket would take its place and receive output.
// The replacement is opened so that reading or writing fails.
void occupyStandardStreams()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(descriptor, F_GETFD) == -1 &&
            open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY) != descriptor)
            std::_Exit(static_cast<int>(ExitStatus::Failed));
}

} // namespace

int main(int argc, char **argv)
{
    occupyStandardStreams();
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName("progkeysctl"_s);
    // The output is UTF-8 in every locale. wcwidth() depends on the locale.
    std::setlocale(LC_CTYPE, "C.UTF-8");
    try {
        return static_cast<int>(cli::run(commands::all(), {argv + 1, argv + argc}));
    } catch (const Failure &failure) {
        std::fflush(stdout);
        output::sayFailure(failure);
        return static_cast<int>(failure.status);
    }
}
