#pragma once

#include <QDBusAbstractAdaptor>
#include <QString>

class Subject;

/// Operations that answer, and some that do not.
class SubjectAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.velmora.Tessaro.ZELInterface")

public:
    explicit SubjectAdaptor(Subject &subject);

public slots:
    QString echo(const QString &text) { return text; }
    /// Throws an exception of type 4 with this message.
    QString fail(const QString &message);
    /// The same, in the name of no module.
    void failNamelessly(const QString &message);

private:
    Subject &m_subject;
};
