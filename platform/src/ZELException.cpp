#include "zelcore/ZELException.h"

#include <utility>

ZELException::ZELException(const ZELModule *module, int errorType, QString message)
    : m_module(module), m_errorType(errorType), m_message(std::move(message))
{
}

const ZELModule *ZELException::getModule() const
{
    return m_module;
}

int ZELException::getErrorType() const
{
    return m_errorType;
}

QString ZELException::getMessage() const
{
    return m_message;
}
