// Preloaded into programs that run under QEMU. Qt checks whether waitid supports P_PIDFD and, if
// so, creates processes with CLONE_PIDFD. QEMU 7.2 passes this check on to the kernel of the host,
// but does not support CLONE_PIDFD. This library makes the check fail, as before Linux 5.4, so that
// Qt uses fork.
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <dlfcn.h>
#include <sys/syscall.h>

namespace {

constexpr long PidFd = 3; // P_PIDFD, which only newer headers define

// Child processes may be programs of the host, which cannot load this library.
[[gnu::constructor]] void doNotPreloadIntoChildren()
{
    ::unsetenv("LD_PRELOAD");
}

} // namespace

extern "C" long syscall(long number, ...)
{
    long words[6];
    va_list list;
    va_start(list, number);
    for (long &word : words)
        word = va_arg(list, long);
    va_end(list);
    if (number == SYS_waitid && words[0] == PidFd) {
        errno = EINVAL;
        return -1;
    }
    using Call = long (*)(long, ...);
    static const auto next = reinterpret_cast<Call>(::dlsym(RTLD_NEXT, "syscall"));
    return next(number, words[0], words[1], words[2], words[3], words[4], words[5]);
}
