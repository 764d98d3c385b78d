#pragma once

#include "defaults/Setting.h"
#include "outcome/Failure.h"

#include <QStringList>

#include <optional>

namespace unit {

/// UTF-8 as it stands in a test.
QString utf8(const char *text);

/// What was found, each as "RECORD:FIELD code of part": the part of the text that is its place.
QStringList brief(const defaults::Setting &setting);

/// The records of the text, checked each by itself.
defaults::Setting checked(defaults::Kind kind, const QByteArray &bytes);

/// What the function throws; nothing if it does not.
template <typename Function>
std::optional<Failure> failureOf(Function function)
{
    try {
        function();
    } catch (const Failure &failure) {
        return failure;
    }
    return std::nullopt;
}

} // namespace unit
