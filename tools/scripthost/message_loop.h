// Waiting as an apartment's thread must: window messages, and with them calls from other apartments, are
// served.
#pragma once

#include <windows.h>

namespace ScriptHost {

// Serves messages until `milliseconds` have passed; 0 serves those that are waiting. A quit message ends the
// process with its status.
void pumpMessages(DWORD milliseconds);

// Whether a message is being served right now.
bool isPumping();

}  // namespace ScriptHost
