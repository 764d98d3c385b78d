#pragma once

#include "records/Action.h"
#include "records/Key.h"

/// The arguments of AOMKEY_PRESS_NTF, written straight into the message: no event object, no
/// variants but those that travel.
struct Answer
{
    Key key;
    Action action;
};

Q_DECLARE_METATYPE(Answer)

/// Makes the type known to the bus, as `a(svb)`. To be called once, after the records' own.
void registerAnswer();
