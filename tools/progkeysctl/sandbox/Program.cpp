#include "sandbox/Program.h"

#include "sandbox/Signals.h"

#include <QFile>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace sandbox {
namespace {

bool takeStreams(const QByteArray &log)
{
    const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
    const int file = open(log.constData(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    return nothing >= 0 && file >= 0 && dup2(nothing, STDIN_FILENO) >= 0 &&
           dup2(file, STDOUT_FILENO) >= 0 && dup2(file, STDERR_FILENO) >= 0 && setsid() >= 0;
}

std::vector<char *> argumentVector(const Program &program)
{
    std::vector<char *> words{const_cast<char *>(program.file.constData())};
    for (const QByteArray &argument : program.arguments)
        words.push_back(const_cast<char *>(argument.constData()));
    words.push_back(nullptr);
    return words;
}

bool diesWith(pid_t parent)
{
    // The parent may have ended before the kernel was told to watch it.
    return prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 && getppid() == parent;
}

// Returns only if that fails.
void become(const Program &program, const std::vector<char *> &words, pid_t parent)
{
    if (!diesWith(parent) || (!program.log.isEmpty() && !takeStreams(program.log)))
        return;
    for (auto entry = program.environment.begin(); entry != program.environment.end(); ++entry) {
        if (setenv(entry.key().constData(), entry.value().constData(), 1) != 0)
            return;
    }
    execvp(words.front(), words.data());
}

struct Pipe
{
    std::array<int, 2> ends = {-1, -1};

    Pipe() : isOpen(pipe2(ends.data(), O_CLOEXEC) == 0) {}
    ~Pipe() { closeAll(); }
    Pipe(const Pipe &) = delete;
    Pipe &operator=(const Pipe &) = delete;

    void closeEnd(std::size_t which)
    {
        if (ends.at(which) >= 0)
            close(ends.at(which));
        ends.at(which) = -1;
    }
    void closeAll()
    {
        closeEnd(0);
        closeEnd(1);
    }

    bool isOpen;
};

// What the child could not do; 0 once it is another program, which closes its end.
int errorOf(const Pipe &report)
{
    int error = 0;
    ssize_t length = 0;
    do
        length = read(report.ends[0], &error, sizeof error);
    while (length < 0 && errno == EINTR);
    return length == sizeof error ? error : 0;
}

} // namespace

QString CannotRun::message() const
{
    return QStringLiteral("Cannot run %1: %2")
        .arg(QFile::decodeName(file), QString::fromLocal8Bit(std::strerror(error)));
}

pid_t launch(const Program &program, const Signals &arrivals)
{
    const std::vector<char *> words = argumentVector(program);
    const pid_t parent = getpid();
    Pipe report;
    if (!report.isOpen)
        throw CannotRun{program.file, errno};
    const pid_t child = fork();
    if (child < 0)
        throw CannotRun{program.file, errno};
    if (child == 0) {
        arrivals.release();
        become(program, words, parent);
        const int error = errno;
        _exit(write(report.ends[1], &error, sizeof error) == sizeof error ? 127 : 126);
    }
    report.closeEnd(1);
    if (const int error = errorOf(report)) {
        waitpid(child, nullptr, 0);
        throw CannotRun{program.file, error};
    }
    return child;
}

} // namespace sandbox
