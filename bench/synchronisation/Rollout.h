#pragma once

#include <QString>

/// Whose keys are provisioned: those of add-on modules, or those of the set, which the limit holds.
enum class Keys { OfModules, OfSet };

/// The defaults of a phone with `count` provisioned actions and as many keys.
struct Rollout
{
    QString actions;
    QString keys;
};

Rollout makeRollout(int count, Keys kind);
