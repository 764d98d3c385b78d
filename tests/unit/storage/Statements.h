#pragma once

#include <QMetaType>
#include <QStringList>

#include <vector>

/// One statement of the store, for the tests that treat all alike.
struct StatementCase
{
    const char *description;
    const char *text;
    const char *table;
    /// Runs it for a record that is there, and says how it went: "0", "-3", "no record" ...
    QString (*run)();
    QString success;
    QString failure;
};

/// Every statement of both tables.
const std::vector<StatementCase> &allStatements();

/// Both tables anew, with the rows that the cases expect: key 1 and action 1, provisioned as "dm".
void layStatementRows();
