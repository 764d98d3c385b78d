#include "BatchScheduling.h"

#include <sched.h>

namespace zel {
namespace {

bool schedule(int policy)
{
    const sched_param priority = {};
    return ::sched_setscheduler(0, policy, &priority) == 0;
}

} // namespace

BatchScheduling::BatchScheduling()
    : m_isOn(::sched_getscheduler(0) == SCHED_OTHER && schedule(SCHED_BATCH))
{
}

BatchScheduling::~BatchScheduling()
{
    if (m_isOn)
        schedule(SCHED_OTHER);
}

} // namespace zel
