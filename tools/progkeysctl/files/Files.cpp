#include "files/Files.h"

#include "outcome/Failure.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cstdio>

namespace files {
namespace {

[[noreturn]] void throwReadFailure(const QString &file, const QString &reason)
{
    throw Failure{
        ExitStatus::Failed, QStringLiteral("%1 cannot be read: %2").arg(file, reason), {}};
}

[[noreturn]] void throwWriteFailure(const QString &file, const QFileDevice &target)
{
    throw Failure{ExitStatus::Failed,
                  QStringLiteral("%1 cannot be written: %2").arg(file, target.errorString()),
                  {}};
}

// A pipe or a device is written to: to save a file would put that in its place.
void writeThrough(const QString &file, const QByteArray &bytes)
{
    QFile target(file);
    if (!target.open(QIODevice::WriteOnly) || target.write(bytes) != bytes.size() ||
        !target.flush())
        throwWriteFailure(file, target);
}

} // namespace

QByteArray readAll(const QString &file)
{
    if (QFileInfo(file).isDir())
        throwReadFailure(file, QStringLiteral("it is a directory"));
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
    const QFileInfo there(file);
    if (there.exists() && !there.isFile() && !there.isDir()) {
        writeThrough(file, bytes);
        return;
    }
    QSaveFile target(file);
    if (!target.open(QIODevice::WriteOnly) || target.write(bytes) != bytes.size() ||
        !target.commit())
        throwWriteFailure(file, target);
}

} // namespace files
