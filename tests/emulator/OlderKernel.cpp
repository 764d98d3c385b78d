// Preloaded into programs that run under QEMU. Qt asks the kernel whether waitid knows P_PIDFD, and
// if so makes processes with CLONE_PIDFD. QEMU 7.2 lets the question through to a kernel that does,
// but refuses to clone. Here the question is answered as before Linux 5.4, and Qt forks.
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <dlfcn.h>
#include <sys/syscall.h>

namespace {

constexpr long PidFd = 3; // P_PIDFD, which is an enumerator in newer headers only

// What these programs start may be of this machine, and is not to preload this.
[[gnu::constructor]] void leaveChildrenAlone()
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
