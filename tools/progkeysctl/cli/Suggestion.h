#pragma once

#include <QString>
#include <QStringList>

namespace cli {

/// `Did you mean "key"?` for a word that looks like a misspelling of one of the known words; empty
/// if none is similar.
QString suggestion(const QString &word, const QStringList &known);

} // namespace cli
