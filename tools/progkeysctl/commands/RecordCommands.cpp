#include "commands/RecordCommands.h"

#include "cli/Arguments.h"
#include "commands/Refusals.h"
#include "text/Format.h"

namespace commands {
namespace {

template <typename Record>
struct Kind;

template <>
struct Kind<Key>
{
    static constexpr const char *Noun = "key";
    static constexpr const char *IdName = "idKey";
    static constexpr const char *IdArgument = "KEY_ID";
    static constexpr auto Id = &Key::idKey;
    static constexpr const char *Get = "getProgrammableKey";
    static constexpr const char *Create = "createProgrammableKey";
    static constexpr const char *Modify = "modifyProgrammableKey";
};

template <>
struct Kind<Action>
{
    static constexpr const char *Noun = "action";
    static constexpr const char *IdName = "idAction";
    static constexpr const char *IdArgument = "ACTION_ID";
    static constexpr auto Id = &Action::idAction;
    static constexpr const char *Get = "getAction";
    static constexpr const char *Create = "addAction";
    static constexpr const char *Modify = "modifyAction";
};

template <typename Record>
QString noun()
{
    return QString::fromLatin1(Kind<Record>::Noun);
}

template <typename Record>
QString idName()
{
    return QString::fromLatin1(Kind<Record>::IdName);
}

// The values of a new record that differ from those of an empty one.
void setDefaults(Key &key)
{
    key.type = KeyType::Set;
}

void setDefaults(Action & /*action*/) {}

void requireComplete(const Key &key)
{
    if (key.position < 0)
        throw Failure{ExitStatus::Usage, "position is required (0 or greater)"_s,
                      "See \"progkeysctl key add --help\"."_s};
}

void requireComplete(const Action & /*action*/) {}

template <typename Record>
void warnOfDmId(const Record &before, const Record &after)
{
    const QString kind = noun<Record>();
    if (!after.dmId.isEmpty())
        output::warn(format("with a dmId, the %1 is treated as provisioned: it cannot be deleted, "
                            "and a start of the service may overwrite or remove it",
                            kind));
    else if (!before.dmId.isEmpty())
        output::warn(format("without its dmId, the %1 is no longer provisioned: it can be deleted, "
                            "and the next start of the service may create the provisioned %1 again",
                            kind));
}

template <typename Record>
void printDone(cli::Session &session, const char *verb, const Record &record)
{
    session.out().done(format("%1 %2 %3.", verb, noun<Record>(), record.*Kind<Record>::Id),
                       fields::columns<Record>(), fields::toJson(record));
}

// Whether the failure concerns one record only.
bool isOfOneRecord(const Failure &failure)
{
    return failure.status == ExitStatus::Failed || failure.status == ExitStatus::NotFound;
}

} // namespace

template <typename Record>
Record existing(const client::ProgrammableKeys &service, qlonglong id)
{
    const auto records = service.call<QList<Record>>(Kind<Record>::Get, id);
    if (records.isEmpty())
        throw noSuchRecord(noun<Record>(), id);
    return records.first();
}

template <typename Record>
ExitStatus showRecord(cli::Session &session, const cli::Arguments &arguments)
{
    const auto record = existing<Record>(session.service(), arguments.id(Kind<Record>::IdArgument));
    session.out().record(fields::columns<Record>(), fields::toJson(record));
    return ExitStatus::Done;
}

template <typename Record>
ExitStatus addRecord(cli::Session &session, const cli::Arguments &arguments)
{
    constexpr auto Id = Kind<Record>::Id;
    session.out().requireFields(fields::columns<Record>());
    Record record;
    setDefaults(record);
    fields::assign(record, arguments.texts("FIELD=VALUE"));
    if (record.*Id != Record().*Id)
        throw Failure{
            ExitStatus::Usage,
            format("The service assigns the %1 of a new %2", idName<Record>(), noun<Record>()),
            format("Omit %1.", idName<Record>())};
    requireComplete(record);
    warnOfDmId(Record(), record);
    const qlonglong result = session.service().call<qlonglong>(Kind<Record>::Create, record);
    if (result < 0)
        throw writeRefused(session.service(), record,
                           format("The %1 was not created", noun<Record>()), result);
    record.*Id = result;
    printDone(session, "Created", record);
    return ExitStatus::Done;
}

template <typename Record>
ExitStatus setRecord(cli::Session &session, const cli::Arguments &arguments)
{
    const qlonglong id = arguments.id(Kind<Record>::IdArgument);
    session.out().requireFields(fields::columns<Record>());
    const auto before = existing<Record>(session.service(), id);
    Record record = before;
    fields::assign(record, arguments.texts("FIELD=VALUE"));
    if (record.*Kind<Record>::Id != id)
        throw Failure{ExitStatus::Usage, format("%1 cannot be changed", idName<Record>()),
                      format("Create another %1 and delete this one.", noun<Record>())};
    warnOfDmId(before, record);
    const int code = session.service().call<int>(Kind<Record>::Modify, record);
    if (code != 0)
        throw writeRefused(session.service(), record,
                           format("The %1 was not changed", noun<Record>()), code);
    printDone(session, "Changed", record);
    return ExitStatus::Done;
}

template <typename Record>
cli::Command withFields(cli::Command command, const char *example)
{
    for (const fields::Field<Record> &field : fields::of<Record>().mid(1))
        command.fields.append(
            {field.name + (field.isText() ? "=TEXT"_s : "=NUMBER"_s), field.help});
    command.notes = format("Example: progkeysctl %1 %2", command.name(), example);
    return command;
}

ExitStatus deleteEach(cli::Session &session, const QList<QByteArray> &ids,
                      const QList<output::Column> &columns,
                      const std::function<QJsonObject(qlonglong)> &remove)
{
    session.out().requireFields(columns);
    ExitStatus status = ExitStatus::Done;
    output::Listing removed;
    removed.columns = columns;
    for (const QByteArray &id : ids) {
        try {
            removed.rows.append(remove(id.toLongLong()));
        } catch (const Failure &failure) {
            if (!isOfOneRecord(failure))
                throw;
            session.out().flush();
            output::sayFailure(failure);
            if (status == ExitStatus::Done)
                status = failure.status;
        }
    }
    if (!session.out().isForPeople())
        session.out().list(removed);
    return status;
}

template Key existing(const client::ProgrammableKeys &, qlonglong);
template Action existing(const client::ProgrammableKeys &, qlonglong);
template ExitStatus showRecord<Key>(cli::Session &, const cli::Arguments &);
template ExitStatus showRecord<Action>(cli::Session &, const cli::Arguments &);
template ExitStatus addRecord<Key>(cli::Session &, const cli::Arguments &);
template ExitStatus addRecord<Action>(cli::Session &, const cli::Arguments &);
template ExitStatus setRecord<Key>(cli::Session &, const cli::Arguments &);
template ExitStatus setRecord<Action>(cli::Session &, const cli::Arguments &);
template cli::Command withFields<Key>(cli::Command, const char *);
template cli::Command withFields<Action>(cli::Command, const char *);

} // namespace commands
