#include "files/Files.h"

#include "outcome/Failure.h"
#include "text/Format.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cstdio>

namespace files {
namespace {

[[noreturn]] void throwReadFailure(const QString &file, const QString &reason)
{
    throw Failure{ExitStatus::Failed, format("Cannot read %1: %2", displayName(file), reason)};
}

// A pipe, a device, or another name of an open file: a new file must not take its place.
bool isStream(const QString &file)
{
    const QFileInfo info(file);
    const QString path = QDir::cleanPath(info.absoluteFilePath());
    return path.startsWith("/dev/"_s) || path.startsWith("/proc/"_s) ||
           (info.exists() && !info.isFile() && !info.isDir());
}

void throwUnless(bool isWritten, const QFileDevice &target)
{
    if (!isWritten)
        throw Failure{ExitStatus::Failed,
                      format("Cannot write %1: %2", target.fileName(), target.errorString())};
}

} // namespace

QString displayName(const QString &file)
{
    return file == StandardStream ? "standard input"_s : file;
}

QByteArray readAll(const QString &file)
{
    if (QFileInfo(file).isDir())
        throwReadFailure(file, "it is a directory"_s);
    QFile source(file);
    const bool isOpen = file == StandardStream ? source.open(stdin, QIODevice::ReadOnly)
                                               : source.open(QIODevice::ReadOnly);
    if (!isOpen)
        throwReadFailure(file, source.errorString());
    QByteArray bytes = source.readAll();
    if (source.error() != QFileDevice::NoError)
        throwReadFailure(file, source.errorString());
    return bytes;
}

void writeWhole(const QString &file, const QByteArray &bytes)
{
    if (isStream(file)) {
        QFile target(file);
        const QIODevice::OpenMode mode =
            QFileInfo(file).isFile() ? QIODevice::Append : QIODevice::WriteOnly;
        throwUnless(target.open(mode) && target.write(bytes) == bytes.size() && target.flush(),
                    target);
        return;
    }
    QSaveFile target(file);
    throwUnless(target.open(QIODevice::WriteOnly) && target.write(bytes) == bytes.size() &&
                    target.commit(),
                target);
}

QString decodeUtf8(const QByteArray &bytes)
{
    // After a letter, a byte order mark is an ordinary character to Qt.
    const QByteArray guarded = 'x' + bytes;
    return QString::fromUtf8(guarded.constData(), static_cast<int>(guarded.size())).mid(1);
}

QByteArray requireUtf8(QByteArray bytes, const QString &file)
{
    if (bytes.startsWith("\xef\xbb\xbf"))
        bytes.remove(0, 3);
    if (decodeUtf8(bytes).toUtf8() != bytes)
        throw Failure{ExitStatus::InvalidText, format("%1 is not UTF-8", file),
                      "Save it as UTF-8."_s};
    return bytes;
}

} // namespace files
