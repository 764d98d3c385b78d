#pragma once

#include "client/Bus.h"
#include "records/Action.h"
#include "records/Key.h"

namespace completion {

/// What is on the phone, for candidates: whatever goes wrong, there is nothing.
class PhoneRows
{
public:
    explicit PhoneRows(client::BusChoice choice) : m_choice(std::move(choice)) {}

    ListKey keys() const;
    ListAction actions() const;

private:
    client::BusChoice m_choice;
};

} // namespace completion
