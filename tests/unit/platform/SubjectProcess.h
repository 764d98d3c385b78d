#pragma once

#include <QDBusMessage>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// A running Subject, seen from outside. It is ended with this object at the latest.
class SubjectProcess
{
public:
    /// Starts it; `environment` holds what differs, as "NAME=value".
    explicit SubjectProcess(const QStringList &words = {}, const QStringList &environment = {});
    ~SubjectProcess();
    SubjectProcess(const SubjectProcess &) = delete;
    SubjectProcess &operator=(const SubjectProcess &) = delete;

    static QString serviceName();
    static QString objectPath();
    static QString operations();
    static QString lifecycle();

    /// Waits until it owns its name; false if it ends instead.
    bool waitUntilReady();
    /// Waits for its end: the exit status, or -1 if it crashed or goes on.
    int waitForExit();
    void sendSignal(int number) const;
    /// Waits until it has noted this; false if it does not.
    bool waitForNote(const QString &note);
    /// Lets a hook go on that waits.
    void goOn() { m_process.closeWriteChannel(); }

    /// What it noted so far: the hooks that ran.
    QStringList notes() const;
    /// Its log so far, each line as "level: text".
    QStringList log() const;

    QDBusMessage call(const QString &interface, const QString &method,
                      const QList<QVariant> &arguments = {}) const;
    bool isAnswering() const;

private:
    bool hasEnded() const { return m_process.state() == QProcess::NotRunning; }
    QStringList linesOf(const QString &file) const;

    QTemporaryDir m_directory;
    QProcess m_process;
};
