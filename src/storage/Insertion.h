#pragma once

#include <QtGlobal>

/// The result of an insertion: a ResultCode and, on success, the id of the new row.
struct Insertion
{
    qlonglong id;
    int code;
};
