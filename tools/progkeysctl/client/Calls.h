#pragma once

#include "client/Bus.h"

#include <QDBusPendingReply>

namespace client {

/// Waits for the answer of a call and returns its first value. Throws a Failure for an error.
template <typename Value>
Value answer(const Bus &bus, const QString &module, QDBusPendingReply<Value> reply)
{
    reply.waitForFinished();
    if (reply.isError())
        throwCallFailure(bus, module, reply.error());
    return reply.value();
}

} // namespace client
