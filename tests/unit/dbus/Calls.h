#pragma once

#include "dbus/ZelProgrammableKeysAdaptor.h"

#include <vector>

/// One call of each of the adaptor's methods.
struct Call
{
    const char *description;
    const char *method;
    void (*make)(ZelProgrammableKeysAdaptor &);
};

inline const std::vector<Call> &operationCalls()
{
    using Adaptor = ZelProgrammableKeysAdaptor;
    static const std::vector<Call> calls = {
        {"adding an action", "addAction", [](Adaptor &a) { a.addAction({}); }},
        {"moving keys", "changeProgrammableKeysPosition",
         [](Adaptor &a) { a.changeProgrammableKeysPosition({}); }},
        {"creating a key", "createProgrammableKey",
         [](Adaptor &a) { a.createProgrammableKey({}); }},
        {"deleting an action", "deleteAction", [](Adaptor &a) { a.deleteAction(1); }},
        {"deleting a key", "deleteProgrammableKey", [](Adaptor &a) { a.deleteProgrammableKey(1); }},
        {"one action", "getAction", [](Adaptor &a) { a.getAction(1); }},
        {"all actions", "getAllActions", [](Adaptor &a) { a.getAllActions(); }},
        {"all keys", "getAllProgrammableKeys", [](Adaptor &a) { a.getAllProgrammableKeys(); }},
        {"one key", "getProgrammableKey", [](Adaptor &a) { a.getProgrammableKey(1); }},
        {"the keys of a container", "getProgrammableKeysByContainer",
         [](Adaptor &a) { a.getProgrammableKeysByContainer({}); }},
        {"modifying an action", "modifyAction", [](Adaptor &a) { a.modifyAction({}); }},
        {"modifying a key", "modifyProgrammableKey",
         [](Adaptor &a) { a.modifyProgrammableKey({}); }},
        {"setting an icon", "setIconStateForKey",
         [](Adaptor &a) { a.setIconStateForKey(1, 2, 3); }},
        {"setting a label", "setLabelStateForKey", [](Adaptor &a) { a.setLabelStateForKey(1, 2); }},
    };
    return calls;
}

/// What every module of the framework answers; the overloads share their names.
inline const std::vector<Call> &capabilityCalls()
{
    using Adaptor = ZelProgrammableKeysAdaptor;
    static const std::vector<Call> calls = {
        {"all capabilities", "getCapabilities", [](Adaptor &a) { a.getCapabilities(); }},
        {"the capabilities of a list", "getCapabilities", [](Adaptor &a) { a.getCapabilities(1); }},
        {"one capability", "getCapability", [](Adaptor &a) { a.getCapability(QString()); }},
        {"one capability of a list", "getCapability",
         [](Adaptor &a) { a.getCapability(1, QString()); }},
    };
    return calls;
}
