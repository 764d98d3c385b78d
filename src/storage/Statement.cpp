#include "storage/Statement.h"

#include "records/ResultCode.h"

#include <QSqlDatabase>

#include <vector>

namespace {

// Statements are function-local statics, so they live until the process ends.
std::vector<Statement *> &allStatements()
{
    static std::vector<Statement *> statements;
    return statements;
}

} // namespace

QVariant stored(const QString &text)
{
    if (text.isNull())
        return QStringLiteral("");
    // SQLite removes a leading byte order mark. An additional mark keeps the text unchanged.
    constexpr QChar mark(0xFEFF);
    constexpr QChar swapped(0xFFFE);
    return text.startsWith(mark) || text.startsWith(swapped) ? mark + text : text;
}

Statement::Statement(const char *text) : m_text(QLatin1String(text))
{
    allStatements().push_back(this);
}

bool Statement::prepare()
{
    if (m_query)
        return true;
    m_query.emplace(QString(), QSqlDatabase());
    m_query->setForwardOnly(true);
    return m_query->prepare(m_text);
}

bool Statement::execute(std::initializer_list<QVariant> values)
{
    if (!prepare()) {
        connection::logFailure(*m_query, m_text);
        m_query.reset();
        return false;
    }
    int index = 0;
    for (const QVariant &value : values)
        m_query->bindValue(index++, value);
    if (m_query->exec())
        return true;
    connection::logFailure(*m_query, m_text);
    m_query->finish();
    return false;
}

QSqlQuery &Statement::query()
{
    return *m_query;
}

Insertion Statement::insert(std::initializer_list<QVariant> values)
{
    if (!execute(values))
        return {-1, ResultCode::Failed};
    const qlonglong id = m_query->lastInsertId().toLongLong();
    m_query->finish();
    return {id, ResultCode::Success};
}

int Statement::change(std::initializer_list<QVariant> values)
{
    if (!execute(values))
        return ResultCode::Failed;
    const int rows = m_query->numRowsAffected();
    m_query->finish();
    return rows == 0 ? ResultCode::NoSuchRow : ResultCode::Success;
}

void Statement::forgetAll()
{
    for (Statement *statement : allStatements())
        statement->m_query.reset();
}
