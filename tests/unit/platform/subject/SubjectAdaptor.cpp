#include "SubjectAdaptor.h"

#include "Subject.h"

#include <zelcore/ZELException.h>

SubjectAdaptor::SubjectAdaptor(Subject &subject)
    : QDBusAbstractAdaptor(&subject), m_subject(subject)
{
}

QString SubjectAdaptor::fail(const QString &message)
{
    throw new ZELException(&m_subject, 4, message);
}

void SubjectAdaptor::failNamelessly(const QString &message)
{
    throw new ZELException(nullptr, 9, message);
}
