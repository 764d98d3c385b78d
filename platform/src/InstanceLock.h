#pragma once

#include <QString>

namespace zel {

/// A lock on a module's directory, which prevents two processes from using the same data.
///
/// The lock requires no file and no write permission, but read permission for the directory. The
/// kernel releases it when the process ends.
class InstanceLock
{
public:
    InstanceLock() = default;
    ~InstanceLock();
    InstanceLock(const InstanceLock &) = delete;
    InstanceLock &operator=(const InstanceLock &) = delete;

    /// Locks the directory. Call this again when the directory may have been created or replaced.
    /// Returns false if another process has the lock. Returns true if there is no directory, or if
    /// it cannot be locked.
    bool acquire(const QString &directory);
    void release();

private:
    int m_descriptor = -1;
};

} // namespace zel
