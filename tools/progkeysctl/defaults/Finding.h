#pragma once

#include <QList>
#include <QString>

namespace defaults {

/// A part of a text, in QChars from 0.
struct Span
{
    int start = 0;
    int length = 0;

    int end() const { return start + length; }
};

enum class Severity { Warning, Error };

/// Something to complain of, and where.
struct Finding
{
    Severity severity = Severity::Error;
    QString code; ///< what kind of complaint it is; stays the same when the message is reworded
    QString message;
    int record = 1; ///< from 1, refused and empty records counted
    int field = 0;  ///< from 1; 0 for the record as a whole
    Span place;
    QList<Span> alsoMarked; ///< further places that the message speaks of
    Span shown;             ///< what of the text it is to be shown in
};

} // namespace defaults
