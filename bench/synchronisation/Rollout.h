#pragma once

#include <QString>

/// The defaults of a phone with `count` provisioned actions and as many keys.
struct Rollout
{
    QString actions;
    QString keys;
};

Rollout makeRollout(int count);
