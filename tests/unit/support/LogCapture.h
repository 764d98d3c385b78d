#pragma once

#include <QFile>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace unit {

/// Log lines as "level: text", without time, name and process. Lines in another format are not
/// changed.
QStringList withoutPrefixes(const QStringList &lines);

/// While this object exists, it redirects the error output of this process to a file and sets the
/// log level.
class LogCapture
{
public:
    explicit LogCapture(int level);
    ~LogCapture();
    LogCapture(const LogCapture &) = delete;
    LogCapture &operator=(const LogCapture &) = delete;

    /// The lines written since the last call.
    QStringList takeRaw();
    /// The same, each as "level: text".
    QStringList take();

    QString path() const;

private:
    QTemporaryDir m_directory;
    QFile m_reader;
    int m_formerOutput;
    int m_formerLevel;
};

} // namespace unit
