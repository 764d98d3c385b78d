#pragma once

#include <QString>

#include <optional>

/// While it exists, writes are not synced one by one. Its destructor syncs them together. If no row
/// was changed, it writes nothing. A failure is logged.
///
/// A power cut in between loses some of the last writes, but damages nothing. That holds only with
/// a write-ahead log; with a rollback journal, every write is still synced.
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
