#pragma once

#include <zelcore/ZELLogger.h>

#include <QLatin1String>
#include <QString>

#include <type_traits>

/// The log lines of the service. Values replace `%1` and `%2` in a line. A line is built only if
/// the configured level includes it.
namespace logging {
namespace detail {

inline QString text(const QString &value)
{
    return value;
}

// A value that is expensive to compute can be a function, which is called only for written lines.
template <typename Value>
QString text(const Value &value)
{
    if constexpr (std::is_invocable_v<Value>)
        return value();
    else
        return QString::number(value);
}

using Writer = void (ZELLogger::*)(const QString &) const;

template <typename... Values>
void write(int threshold, Writer writer, const char *line, const Values &...values)
{
    if (ZELLogger::getConfiguredLevel() <= threshold)
        return;
    const ZELLogger target = logger(QString());
    const QLatin1String pattern(line);
    if constexpr (sizeof...(values) == 0)
        (target.*writer)(pattern);
    else
        (target.*writer)(QString(pattern).arg(text(values)...));
}

} // namespace detail

template <typename... Values>
void error(const char *line, const Values &...values)
{
    detail::write(2, &ZELLogger::error, line, values...);
}

template <typename... Values>
void warning(const char *line, const Values &...values)
{
    detail::write(3, &ZELLogger::warning, line, values...);
}

template <typename... Values>
void info(const char *line, const Values &...values)
{
    detail::write(5, &ZELLogger::info, line, values...);
}

template <typename... Values>
void debug(const char *line, const Values &...values)
{
    detail::write(6, &ZELLogger::debug, line, values...);
}

} // namespace logging
