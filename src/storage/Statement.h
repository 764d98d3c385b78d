#pragma once

#include "storage/ProgKeysDatabase.h"

#include <QList>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QString>
#include <QVariant>

#include <initializer_list>
#include <optional>

/// Writes the log line of a statement that failed. Where the connection never opened, the query
/// knows neither its text nor an error; `text` and the connection's own error stand in.
void logFailure(const QSqlQuery &query, const QString &text);

/// A text as the tables hold it: a null one is stored as an empty one, never as NULL.
QVariant stored(const QString &text);

/// One statement, prepared at its first use and kept. One that could not be prepared is tried
/// again the next time. It is finished after each use, so that it holds no lock, and outlives a
/// schema reset.
class Statement
{
public:
    explicit Statement(const char *text);

    /// Binds the values in order and executes; false, after a log line, if that failed. After a
    /// success the rows are in `query`, which is the caller's to finish.
    bool execute(std::initializer_list<QVariant> values);
    QSqlQuery &query();

    /// Executes an insertion.
    Insertion insert(std::initializer_list<QVariant> values);

    /// Executes an update or deletion; NoSuchRow if it matched none.
    int change(std::initializer_list<QVariant> values);

    /// Forgets every prepared statement, so that the connection can close.
    static void forgetAll();

private:
    bool prepare();

    QString m_text;
    std::optional<QSqlQuery> m_query;
};

/// All rows of a query that was executed; none if reading them fails, which is logged. `Columns`
/// finds the columns by name in its constructor, from a QSqlRecord, and reads one row by index in
/// `read`, which costs half as much as by name.
template <typename Record, typename Columns>
QList<Record> readAll(QSqlQuery &query, const Columns &columns)
{
    QList<Record> records;
    while (query.next())
        records.append(columns.read(query));
    if (query.lastError().isValid()) {
        logFailure(query, query.lastQuery());
        records.clear();
    }
    query.finish();
    return records;
}

/// The first row of a query that was executed, as with `readAll`.
template <typename Record, typename Columns>
std::optional<Record> readFirst(QSqlQuery &query, const Columns &columns)
{
    std::optional<Record> record;
    if (query.next())
        record = columns.read(query);
    else if (query.lastError().isValid())
        logFailure(query, query.lastQuery());
    query.finish();
    return record;
}

/// What reads as a list for its callers, though there can be only one.
template <typename Record>
QList<Record> zeroOrOne(const std::optional<Record> &record)
{
    return record ? QList<Record>{*record} : QList<Record>();
}

/// For a statement that selects a single value.
template <typename Value>
class FirstColumn
{
public:
    explicit FirstColumn(const QSqlRecord & /*record*/) {}
    Value read(const QSqlQuery &row) const { return row.value(0).template value<Value>(); }
};

/// A statement that reads records and looks its columns up only once.
template <typename Record, typename Columns>
class SelectStatement
{
public:
    explicit SelectStatement(const char *text) : m_statement(text) {}

    /// The rows for these values; none if the statement failed.
    QList<Record> read(std::initializer_list<QVariant> values)
    {
        if (!m_statement.execute(values))
            return {};
        return readAll<Record>(m_statement.query(), columns());
    }

    /// The first row for these values, if there is one; the rows after it are not looked for, which
    /// spares the rest of a table that has no index for the question.
    std::optional<Record> readFirst(std::initializer_list<QVariant> values)
    {
        if (!m_statement.execute(values))
            return std::nullopt;
        return ::readFirst<Record>(m_statement.query(), columns());
    }

private:
    const Columns &columns()
    {
        if (!m_columns)
            m_columns.emplace(m_statement.query().record());
        return *m_columns;
    }

    Statement m_statement;
    std::optional<Columns> m_columns;
};
