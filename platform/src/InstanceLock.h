#pragma once

#include <QString>

namespace zel {

/// Keeps two processes from using the data of the same module: a lock on the module's directory.
///
/// The lock needs no file and no write access, and the kernel drops it when the process ends. Only
/// a user who can read the directory can take it.
class InstanceLock
{
public:
    InstanceLock() = default;
    ~InstanceLock();
    InstanceLock(const InstanceLock &) = delete;
    InstanceLock &operator=(const InstanceLock &) = delete;

    /// Locks the directory that has this path now. Call it again when the directory may have been
    /// created or replaced. False if another process has the lock; true also if there is no
    /// directory, or none that can be locked.
    bool acquire(const QString &directory);
    void release();

private:
    int m_descriptor = -1;
};

} // namespace zel
