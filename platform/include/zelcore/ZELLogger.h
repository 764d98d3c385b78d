#pragma once

#include <QString>

/// Writes the lines of one category to stderr. Levels are numbered as in syslog: 3 error,
/// 4 warning, 6 info, 7 debug.
///
/// When stderr is the journal a line starts with the sd-daemon prefix of its level (`<3>`), else
/// with `time name[pid] level: `; either way the text stands last, unaltered.
class ZELLogger
{
public:
    explicit ZELLogger(QString category);

    /// The highest level that is written, 0 to 7: ZEL_LOG_LEVEL at the first call, 6 if that is
    /// unset or not such a number. A caller asks before it builds a text that nobody will read.
    static int getConfiguredLevel();
    static void setConfiguredLevel(int level);

    void debug(const QString &text) const;
    void info(const QString &text) const;
    void warning(const QString &text) const;
    void error(const QString &text) const;

private:
    enum Level { Error = 3, Warning = 4, Info = 6, Debug = 7 };
    void write(Level level, const QString &text) const;

    QString m_category;
};

/// The logger of a category; the empty one is the module's own.
ZELLogger logger(const QString &category = QString());
