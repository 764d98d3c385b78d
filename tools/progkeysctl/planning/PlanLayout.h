#pragma once

#include "output/Terminal.h"
#include "planning/Plan.h"

#include <QStringList>

namespace defaults {

enum class Mark { Added, Changed, Removed, Kept, Attention };

/// One thing that a plan tells of.
struct PlanEntry
{
    Mark mark = Mark::Added;
    QString name;
    QString sentence;           ///< told first, if it is not empty
    QList<FieldChange> changes; ///< told one below the other
};

/// Entries in two columns: marks and names, and what is told of each. In a narrow terminal, what is
/// told stands below the name.
QStringList laidOut(const QList<PlanEntry> &entries, const output::Terminal &terminal);

/// The text in lines of at most so many columns, 0 for one line; the second one and those after it
/// are indented. A word that is too long is cut.
QStringList wrapped(const QString &text, int width, int indent = 0);

} // namespace defaults
