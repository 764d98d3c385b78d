#pragma once

#include <QString>
#include <QStringList>
#include <QVariantList>

/// The service's database file as another program sees it that has it open at the same time.
class OtherProgram
{
public:
    OtherProgram();
    ~OtherProgram();
    OtherProgram(const OtherProgram &) = delete;
    OtherProgram &operator=(const OtherProgram &) = delete;

    /// Where the service keeps its file in this process.
    static QString directory();
    static QString fileName();

    /// Executes statements; the test fails if one does.
    void execute(const QStringList &statements) const;

    /// The first row of a query; the test fails if there is none.
    QVariantList row(const QString &query) const;
    QVariant value(const QString &query) const;

    /// The first column of every row.
    QVariantList column(const QString &query) const;

private:
    QList<QVariantList> rows(const QString &query) const;

    QString m_connection;
};
