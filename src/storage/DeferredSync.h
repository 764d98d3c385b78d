#pragma once

#include <QString>

#include <optional>

/// While this object exists, single writes are not synced. Its destructor syncs them together. If
/// no row was changed, it writes nothing. A failure is logged.
///
/// A power cut before the sync can lose the last writes, but does not damage the database. This
/// requires a write-ahead log. With a rollback journal, every write is still synced.
class DeferredSync
{
public:
    DeferredSync();
    ~DeferredSync();
    DeferredSync(const DeferredSync &) = delete;
    DeferredSync &operator=(const DeferredSync &) = delete;

private:
    bool m_isDeferred;
    std::optional<QString> m_changes;
};
