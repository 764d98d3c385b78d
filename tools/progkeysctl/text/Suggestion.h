#pragma once

#include <QString>
#include <QStringList>

namespace text {

/// The advice, preceded by `Did you mean "key"?` if the word looks like a misspelling of one of the
/// known words.
QString withSuggestion(const QString &word, const QStringList &known, const QString &advice);

/// The advice for an unknown field: a suggestion, if there is one, and all fields.
QString adviceOnField(const QString &name, const QStringList &fields);

} // namespace text
