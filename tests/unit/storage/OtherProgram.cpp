#include "storage/OtherProgram.h"

#include <QCoreApplication>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

namespace {

// There is no way on from a test's own statement that fails.
void must(bool done, const QSqlQuery &query, const QString &statement)
{
    if (!done)
        qFatal("%s: %s", qUtf8Printable(statement), qUtf8Printable(query.lastError().text()));
}

QVariantList readRow(const QSqlQuery &query)
{
    QVariantList values;
    for (int index = 0; index < query.record().count(); ++index)
        values.append(query.value(index));
    return values;
}

} // namespace

OtherProgram::OtherProgram() : m_connection(QStringLiteral("other program"))
{
    QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connection);
    database.setDatabaseName(fileName());
    if (!database.open())
        qFatal("Cannot open %s", qUtf8Printable(fileName()));
}

OtherProgram::~OtherProgram()
{
    QSqlDatabase::database(m_connection, false).close();
    QSqlDatabase::removeDatabase(m_connection);
}

QString OtherProgram::directory()
{
    return QCoreApplication::instance()->property("dataRoot").toString() +
           QStringLiteral("ZelProgrammableKeys/");
}

QString OtherProgram::fileName()
{
    return directory() + QStringLiteral("zelprogrammablekeys.data");
}

void OtherProgram::execute(const QStringList &statements) const
{
    for (const QString &statement : statements) {
        QSqlQuery query(QSqlDatabase::database(m_connection));
        must(query.exec(statement), query, statement);
    }
}

QVariantList OtherProgram::row(const QString &query) const
{
    const QList<QVariantList> all = rows(query);
    if (all.isEmpty())
        qFatal("no row: %s", qUtf8Printable(query));
    return all.first();
}

QVariant OtherProgram::value(const QString &query) const
{
    return row(query).first();
}

QVariantList OtherProgram::column(const QString &query) const
{
    QVariantList values;
    const QList<QVariantList> all = rows(query);
    for (const QVariantList &row : all)
        values.append(row.first());
    return values;
}

QList<QVariantList> OtherProgram::rows(const QString &query) const
{
    QSqlQuery reader(QSqlDatabase::database(m_connection));
    must(reader.exec(query), reader, query);
    QList<QVariantList> all;
    while (reader.next())
        all.append(readRow(reader));
    return all;
}
