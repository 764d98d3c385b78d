#pragma once

#include "cli/Arguments.h"
#include "cli/Command.h"
#include "cli/Session.h"
#include "fields/Fields.h"
#include "outcome/Failure.h"
#include "records/ResultCode.h"
#include "text/Format.h"

#include <functional>
#include <type_traits>

/// The parts of the commands `key` and `action` that are the same for both. `Record` is `Key` or
/// `Action`; its identifier is the argument KEY_ID or ACTION_ID.
namespace commands {

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

/// The action of a key does not exist. `what` begins the message, such as "Key 3 was not changed".
Failure missingAction(const QString &what, qlonglong idAction);

/// The service could not store a change.
Failure notStored(const QString &what, qlonglong code);

/// A record with this dmId was not deleted. `what` is the record, such as "Key 3". `advice` is for
/// a provisioned one.
Failure notDeleted(const QString &what, const QString &dmId, qlonglong code, const QString &advice);

/// Why a record was not created or changed. The service does not give the reason for a result code,
/// so the likely one is looked up.
template <typename Record>
Failure refusal(const client::Phone &phone, const Record &record, const char *verb, qlonglong code)
{
    const QString what = format("The %1 was not %2", Kind<Record>::Noun, verb);
    if constexpr (std::is_same_v<Record, Key>) {
        if (code == ResultCode::KeysFull)
            return {ExitStatus::Failed, format("%1: the key limit is reached (-1)", what),
                    "Delete a key of type 0, or raise the setting ProgKeysMax. \"progkeysctl "
                    "status\" shows both numbers."_s};
        if (code == ResultCode::Refused &&
            phone.call<ListAction>("getAction", record.idAction).isEmpty())
            return missingAction(what, record.idAction);
    }
    return notStored(what, code);
}

/// The record with this identifier. Throws a Failure of status NotFound if there is none.
template <typename Record>
Record existing(const client::Phone &phone, qlonglong id)
{
    const auto records = phone.call<QList<Record>>(Kind<Record>::Get, id);
    if (records.isEmpty())
        throw Failure{ExitStatus::NotFound, format("There is no %1 %2", Kind<Record>::Noun, id),
                      format("\"progkeysctl %1 list\" lists the %1s.", Kind<Record>::Noun)};
    return records.first();
}

/// Warns if a record becomes provisioned, or no longer is.
template <typename Record>
void warnOfDmId(const Record &before, const Record &after)
{
    if (!after.dmId.isEmpty())
        output::warn(format("with a dmId, the %1 is treated as provisioned: it cannot be deleted, "
                            "and a start of the service may overwrite or remove it",
                            Kind<Record>::Noun));
    else if (!before.dmId.isEmpty())
        output::warn(format("without its dmId, the %1 is no longer provisioned: it can be deleted, "
                            "and the next start of the service may create the provisioned %1 again",
                            Kind<Record>::Noun));
}

template <typename Record>
void printDone(cli::Session &session, const char *verb, const Record &record)
{
    session.out().done(format("%1 %2 %3.", verb, Kind<Record>::Noun, record.*Kind<Record>::Id),
                       fields::toJson(record));
}

/// The command `show`.
template <typename Record>
void showRecord(cli::Session &session, const cli::Arguments &arguments)
{
    const auto record = existing<Record>(session.phone(), arguments.id(Kind<Record>::IdArgument));
    session.out().record(fields::toJson(record));
}

/// The command `add`.
template <typename Record>
void addRecord(cli::Session &session, const cli::Arguments &arguments)
{
    constexpr auto Id = Kind<Record>::Id;
    Record record;
    if constexpr (std::is_same_v<Record, Key>)
        record.type = KeyType::Set;
    fields::assign(record, arguments.texts("FIELD=VALUE"));
    if (record.*Id != Record().*Id)
        throw Failure{ExitStatus::Usage,
                      format("The service assigns the %1 of a new %2", Kind<Record>::IdName,
                             Kind<Record>::Noun),
                      format("Omit %1.", Kind<Record>::IdName)};
    if constexpr (std::is_same_v<Record, Key>)
        if (record.position < 0)
            throw Failure{ExitStatus::Usage, "position is required (0 or greater)"_s,
                          "See \"progkeysctl key add --help\"."_s};
    warnOfDmId(Record(), record);
    const auto result = session.phone().call<qlonglong>(Kind<Record>::Create, record);
    if (result < 0)
        throw refusal(session.phone(), record, "created", result);
    record.*Id = result;
    printDone(session, "Created", record);
}

/// The command `set`.
template <typename Record>
void setRecord(cli::Session &session, const cli::Arguments &arguments)
{
    const qlonglong id = arguments.id(Kind<Record>::IdArgument);
    const auto before = existing<Record>(session.phone(), id);
    Record record = before;
    fields::assign(record, arguments.texts("FIELD=VALUE"));
    if (record.*Kind<Record>::Id != id)
        throw Failure{ExitStatus::Usage, format("%1 cannot be changed", Kind<Record>::IdName),
                      format("Create another %1 and delete this one.", Kind<Record>::Noun)};
    warnOfDmId(before, record);
    const auto code = session.phone().call<int>(Kind<Record>::Modify, record);
    if (code != ResultCode::Success)
        throw refusal(session.phone(), record, "changed", code);
    printDone(session, "Changed", record);
}

/// The command with a help that lists the fields for FIELD=VALUE and has an example.
template <typename Record>
cli::Command withFields(cli::Command command, const char *example)
{
    for (const fields::Field &field : fields::of<Record>().mid(1))
        command.fields.append(
            {field.name + (field.isNumber ? "=NUMBER"_s : "=TEXT"_s), field.help});
    command.notes = format("Example: progkeysctl %1 %2", command.name(), example);
    return command;
}

/// Deletes records one by one with `remove`, which returns the deleted record. A refusal is
/// reported on stderr and does not stop the others; the first one is the exit status. If the
/// service no longer answers, the rest is not tried.
void deleteEach(cli::Session &session, const QList<QByteArray> &ids,
                const std::function<QJsonObject(qlonglong)> &remove);

} // namespace commands
