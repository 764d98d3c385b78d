#pragma once

#include <QString>

namespace zel {

/// Keeps two processes from starting the same module side by side, from before the first hook on.
/// The bus name cannot do that: it is claimed last. The lock is a name of the kernel's, without a
/// file, and goes with the process however that ends. Any process of the same network name space
/// could hold it: it guards against mistakes, not against malice.
class InstanceLock
{
public:
    InstanceLock() = default;
    ~InstanceLock();
    InstanceLock(const InstanceLock &) = delete;
    InstanceLock &operator=(const InstanceLock &) = delete;

    /// False if another process holds the lock of that name. Where the kernel knows no such names,
    /// nobody is kept out.
    bool acquire(const QString &name);
    void release();

private:
    int m_socket = -1;
};

} // namespace zel
