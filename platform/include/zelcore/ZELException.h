#pragma once

#include <QString>

#include <utility>

class ZELModule;

/// A module throws a pointer to such an object, allocated with `new`, if it cannot handle a call.
/// The framework logs and deletes the exception, and the caller gets an error reply with its
/// message.
class ZELException
{
public:
    ZELException(const ZELModule *module, int errorType, QString message)
        : m_module(module), m_errorType(errorType), m_message(std::move(message))
    {
    }

    /// The module that threw the exception, or null.
    const ZELModule *getModule() const { return m_module; }
    int getErrorType() const { return m_errorType; }
    QString getMessage() const { return m_message; }

private:
    const ZELModule *m_module;
    int m_errorType;
    QString m_message;
};
