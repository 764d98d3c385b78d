#pragma once

#include "defaults/Finding.h"

namespace defaults {

/// A line of text, and a line to be set below it that marks places in it.
struct Excerpt
{
    QString text;
    QString marks;
};

/// What of the text surrounds the finding's place, in at most `width` columns, control characters
/// made visible. `^~~~` stands below the place, and below what else is marked if it is within
/// sight.
Excerpt excerptOf(const QString &text, const Finding &finding, int width);

} // namespace defaults
