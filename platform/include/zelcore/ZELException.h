#pragma once

#include <QString>

class ZELModule;

/// What a module throws, on the heap and as a pointer, when it cannot answer a bus call at all.
/// The application object catches it, logs it and deletes it; the caller gets an error reply.
class ZELException
{
public:
    ZELException(const ZELModule *module, int errorType, QString message);

    /// The module that could not answer; null if it was none.
    const ZELModule *getModule() const;
    int getErrorType() const;
    QString getMessage() const;

private:
    const ZELModule *m_module;
    int m_errorType;
    QString m_message;
};
