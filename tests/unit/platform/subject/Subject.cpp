#include "Subject.h"

#include "SubjectAdaptor.h"

#include <zelcore/ZELApplication.h>
#include <zelcore/ZELException.h>

#include <QDir>

#include <csignal>
#include <cstdio>
#include <utility>

namespace {

void note(const char *what)
{
    std::puts(what);
    std::fflush(stdout);
}

void waitForEndOfInput()
{
    while (std::getchar() != EOF) {
    }
}

} // namespace

Subject::Subject(QStringList words)
    : ZELModule(QStringLiteral("Subject")), m_words(std::move(words))
{
}

bool Subject::run(const char *hook)
{
    note(hook);
    const QString name = QLatin1String(hook);
    if (m_words.contains(name + QStringLiteral("=throw")))
        throw new ZELException(this, 4, name + QStringLiteral(" threw"));
    if (m_words.contains(name + QStringLiteral("=wait")))
        waitForEndOfInput();
    if (m_words.contains(name + QStringLiteral("=term")))
        raise(SIGTERM);
    if (m_words.contains(name + QStringLiteral("=wipe")))
        QDir(ZELApplication::dataRoot() + getModuleName()).removeRecursively();
    return !m_words.contains(name + QStringLiteral("=no")) &&
           !m_words.contains(name + QStringLiteral("=never"));
}

bool Subject::check()
{
    return run("check");
}

bool Subject::deploy()
{
    m_words.removeAll(QStringLiteral("check=no"));
    return run("deploy");
}

bool Subject::init()
{
    subscribeEvent(QStringLiteral("SUBJECT_EVENT"), this, SLOT(receive(ZELEvent)));
    return run("init");
}

bool Subject::start()
{
    if (!m_words.contains(QStringLiteral("mute")))
        m_adaptor = new SubjectAdaptor(*this);
    return run("start");
}

void Subject::presentation_loaded()
{
    run("presentation_loaded");
}

void Subject::presentation_stop()
{
    run("presentation_stop");
}

bool Subject::stop()
{
    return run("stop");
}

bool Subject::preSaveForSaveRestore()
{
    return run("preSaveForSaveRestore");
}

bool Subject::postRestoreForSaveRestore()
{
    return run("postRestoreForSaveRestore");
}

bool Subject::restoreDefault()
{
    return run("restoreDefault");
}

bool Subject::restoreFactory()
{
    return run("restoreFactory");
}

void Subject::receive(const ZELEvent &event)
{
    note("event");
    const QVariant thrown = event.getArgument(QStringLiteral("throw"));
    if (thrown.isValid())
        throw new ZELException(this, 7, thrown.toString());
    ZELEvent answer;
    answer.setEvtName(QStringLiteral("SUBJECT_ANSWER"));
    notifyEvent(answer);
}
