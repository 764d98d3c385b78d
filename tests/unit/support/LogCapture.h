#pragma once

#include <QFile>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace unit {

/// Log lines as "level: text", without time, name and process. A line of any other form is kept
/// whole, so that it shows in a comparison.
QStringList withoutPrefixes(const QStringList &lines);

/// While it lives, what this process writes to its error output goes into a file, and the
/// configured log level is the given one.
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
