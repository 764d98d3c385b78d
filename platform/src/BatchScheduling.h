#pragma once

namespace zel {

/// While it lives, threads that this thread starts are batch threads, which do not interrupt others
/// when they wake up. Where the process was given another scheduling than the usual one, nothing
/// happens.
class BatchScheduling
{
public:
    BatchScheduling();
    ~BatchScheduling();
    BatchScheduling(const BatchScheduling &) = delete;
    BatchScheduling &operator=(const BatchScheduling &) = delete;

private:
    bool m_isOn;
};

} // namespace zel
