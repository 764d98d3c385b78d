#pragma once

// The types that the generated proxy uses.
#include "records/Action.h"
#include "records/Key.h"

#include <zelcore/ZELTypes.h>
