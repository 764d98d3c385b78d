#pragma once

#include "storage/Connection.h"
#include "storage/Insertion.h"

#include <QList>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QString>
#include <QVariant>

#include <array>
#include <initializer_list>
#include <optional>
#include <tuple>

/// The value to store for a text. A null text is stored as an empty text, not as NULL.
QVariant stored(const QString &text);

/// A statement. It is prepared at its first use and kept. If this fails, the next use prepares it
/// again. It is finished after each use, so that it holds no lock, and it can be used after the
/// tables have been recreated.
class Statement
{
public:
    explicit Statement(const char *text);

    /// Binds the values in order and executes the statement. A failure is logged and returns false.
    /// After success, `query` has the rows, and the caller must finish it.
    bool execute(std::initializer_list<QVariant> values);
    QSqlQuery &query();

    /// Executes an insertion.
    Insertion insert(std::initializer_list<QVariant> values);

    /// Executes an update or deletion. Returns a ResultCode, which is NoSuchRow if it matched no
    /// row.
    int change(std::initializer_list<QVariant> values);

    /// Deletes all prepared statements, so that the connection can be closed.
    static void forgetAll();

private:
    bool prepare();

    QString m_text;
    std::optional<QSqlQuery> m_query;
};

/// The columns of a record. Each statement looks them up by name once and then reads rows by index,
/// which takes half the time.
template <typename Record>
class Columns
{
public:
    explicit Columns(const QSqlRecord &columns)
    {
        const auto find = [&](const auto &...field) {
            return Indexes{columns.indexOf(QLatin1String(field.name))...};
        };
        m_indexes = std::apply(find, Record::fields());
    }

    Record read(const QSqlQuery &row) const
    {
        Record record;
        auto index = m_indexes.cbegin();
        const auto readAll = [&](const auto &...field) {
            (assign(record.*field.member, row.value(*index++)), ...);
        };
        std::apply(readAll, Record::fields());
        return record;
    }

private:
    using Indexes = std::array<int, std::tuple_size_v<decltype(Record::fields())>>;

    template <typename Value>
    static void assign(Value &field, const QVariant &value)
    {
        field = value.value<Value>();
    }

    Indexes m_indexes;
};

/// The column of a statement that selects a single value.
template <typename Value>
class SingleColumn
{
public:
    explicit SingleColumn(const QSqlRecord & /*columns*/) {}
    Value read(const QSqlQuery &row) const { return row.value(0).template value<Value>(); }
};

/// A list with the record, or an empty list.
template <typename Record>
QList<Record> zeroOrOne(const std::optional<Record> &record)
{
    return record ? QList<Record>{*record} : QList<Record>();
}

/// A statement that reads records, or single values with a SingleColumn.
template <typename Record, typename Reader = Columns<Record>>
class SelectStatement
{
public:
    explicit SelectStatement(const char *text) : m_statement(text) {}

    /// The rows for these values, or an empty list after a failure.
    QList<Record> read(std::initializer_list<QVariant> values)
    {
        QList<Record> records;
        if (!m_statement.execute(values))
            return records;
        QSqlQuery &query = m_statement.query();
        while (query.next())
            records.append(reader().read(query));
        return finish() ? records : QList<Record>();
    }

    /// The first row for these values, if there is one. Stops after this row, which saves the rest
    /// of a table scan.
    std::optional<Record> readFirst(std::initializer_list<QVariant> values)
    {
        std::optional<Record> record;
        if (!m_statement.execute(values))
            return record;
        if (m_statement.query().next())
            record = reader().read(m_statement.query());
        finish();
        return record;
    }

private:
    // Returns whether all rows could be read.
    bool finish()
    {
        QSqlQuery &query = m_statement.query();
        const bool isRead = !query.lastError().isValid();
        if (!isRead)
            connection::logFailure(query, query.lastQuery());
        query.finish();
        return isRead;
    }

    const Reader &reader()
    {
        if (!m_reader)
            m_reader.emplace(m_statement.query().record());
        return *m_reader;
    }

    Statement m_statement;
    std::optional<Reader> m_reader;
};
