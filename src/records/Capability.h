#pragma once

/// `Capability`, `MapQStringCapability` and `QMapIntInt` come with the module framework, which
/// answers for capabilities itself; this header only completes the records in one place.
#include <zelcore/ZELTypes.h>
