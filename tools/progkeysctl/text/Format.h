#pragma once

#include <QString>

#include <type_traits>

/// A QString from a literal in UTF-8.
inline QString operator""_s(const char *text, std::size_t size)
{
    return QString::fromUtf8(text, static_cast<int>(size));
}

namespace text::detail {

template <typename Value>
QString toText(const Value &value)
{
    if constexpr (std::is_arithmetic_v<Value>)
        return QString::number(value);
    else if constexpr (std::is_same_v<Value, QString>)
        return value;
    else
        return QString::fromUtf8(value);
}

} // namespace text::detail

/// The pattern with %1, %2 and so on replaced by the values, which are texts or numbers.
template <typename... Values>
QString format(const char *pattern, const Values &...values)
{
    return QString::fromUtf8(pattern).arg(text::detail::toText(values)...);
}
