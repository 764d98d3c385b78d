#pragma once

// What the generated proxy needs to know, under the names that the interface file uses.
#include "records/Action.h"
#include "records/Key.h"

#include <zelcore/ZELTypes.h>
