#pragma once

#include <QString>

/// A QString from a literal in UTF-8.
inline QString operator""_s(const char *text, std::size_t size)
{
    return QString::fromUtf8(text, static_cast<int>(size));
}

namespace text::detail {

inline QString toText(const QString &value)
{
    return value;
}

inline QString toText(const char *value)
{
    return QString::fromUtf8(value);
}

inline QString toText(QChar value)
{
    return value;
}

template <typename Number>
QString toText(Number value)
{
    return QString::number(value);
}

} // namespace text::detail

/// The pattern with %1, %2 and so on replaced by the values, which are texts or numbers.
template <typename... Values>
QString format(const char *pattern, const Values &...values)
{
    return QString::fromUtf8(pattern).arg(text::detail::toText(values)...);
}
