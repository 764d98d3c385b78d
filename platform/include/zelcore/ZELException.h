#pragma once

#include <QString>

#include <utility>

class ZELModule;

/// What a module throws, on the heap and as a pointer, when it cannot answer a call. The framework
/// logs and deletes it; the caller gets an error reply with its message.
class ZELException
{
public:
    ZELException(const ZELModule *module, int errorType, QString message)
        : m_module(module), m_errorType(errorType), m_message(std::move(message))
    {
    }

    /// The module that could not answer, or null.
    const ZELModule *getModule() const { return m_module; }
    int getErrorType() const { return m_errorType; }
    QString getMessage() const { return m_message; }

private:
    const ZELModule *m_module;
    int m_errorType;
    QString m_message;
};
