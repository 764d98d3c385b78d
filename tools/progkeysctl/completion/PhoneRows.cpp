#include "completion/PhoneRows.h"

#include "client/ProgrammableKeys.h"
#include "outcome/Failure.h"

namespace completion {
namespace {

constexpr int AnswerMs = 1000;

// Nobody starts the service by pressing Tab, as a call might.
template <typename Ask>
auto ask(const client::BusChoice &choice, Ask rows)
    -> decltype(rows(std::declval<const client::ProgrammableKeys &>()))
{
    try {
        const client::Bus bus(choice, AnswerMs);
        const client::ProgrammableKeys service(bus);
        if (service.isRunning())
            return rows(service);
    } catch (const Failure &) {
        return {};
    }
    return {};
}

} // namespace

ListKey PhoneRows::keys() const
{
    return ask(m_choice, [](const client::ProgrammableKeys &service) { return service.keys(); });
}

ListAction PhoneRows::actions() const
{
    return ask(m_choice, [](const client::ProgrammableKeys &service) { return service.actions(); });
}

} // namespace completion
