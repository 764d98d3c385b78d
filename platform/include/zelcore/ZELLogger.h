#pragma once

#include <QString>

/// Writes the log lines of one category to stderr. The levels are those of syslog: 3 error,
/// 4 warning, 6 info, 7 debug.
///
/// If stderr is the journal, a line starts with the sd-daemon prefix of its level (`<3>`), else
/// with `time name[pid] level: `. The text follows unchanged.
class ZELLogger
{
public:
    explicit ZELLogger(QString category);

    /// The highest level that is written, 0 to 7. The default is ZEL_LOG_LEVEL, or 6 if that is not
    /// a valid level. Check the level before you build an expensive text.
    static int getConfiguredLevel();
    static void setConfiguredLevel(int level);

    void debug(const QString &text) const { write(Debug, text); }
    void info(const QString &text) const { write(Info, text); }
    void warning(const QString &text) const { write(Warning, text); }
    void error(const QString &text) const { write(Error, text); }

private:
    enum Level { Error = 3, Warning = 4, Info = 6, Debug = 7 };
    void write(Level level, const QString &text) const;

    QString m_category;
};

/// The logger of a category. The empty category is that of the module.
ZELLogger logger(const QString &category = QString());
