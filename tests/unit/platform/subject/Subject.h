#pragma once

#include <zelcore/ZELModule.h>

#include <QStringList>

/// A module that does as its words say, and notes on its standard output what the framework has it
/// do, a line each. "check=no" makes the hook `check` say no, "init=throw" makes `init` throw,
/// "deploy=wipe" makes `deploy` remove the module's data, "start=term" lets SIGTERM come during
/// `start`, "check=wait" makes `check` last until the input ends; "mute" leaves it without an
/// adaptor.
class Subject : public ZELModule
{
    Q_OBJECT

public:
    explicit Subject(QStringList words);

    bool check() override;
    bool deploy() override;
    bool init() override;
    bool start() override;
    void presentation_loaded() override;
    void presentation_stop() override;
    bool stop() override;
    bool preSaveForSaveRestore() override;
    bool postRestoreForSaveRestore() override;
    bool restoreDefault() override;
    bool restoreFactory() override;

private slots:
    /// Answers "SUBJECT_EVENT" by "SUBJECT_ANSWER", or throws the text of its argument "throw".
    void receive(const ZELEvent &event);

private:
    bool run(const char *hook);

    QStringList m_words;
};
