// The readers of smart cards, and the state of the service that knows of them.
#pragma once

#include "binary/bytes.h"

#include <windows.h>

#include <string>
#include <vector>

namespace Corvane {

struct CardReader {
    std::wstring name;
    DWORD state = 0;  // bits SCARD_STATE_...
    Bytes atr;        // what the card in it answered to being reset (ISO/IEC 7816-3, 8); empty without one
};

// All readers of the service, none where it has none. No card is connected to. Throws Win32Exception
// E_SMART_CARD with the service's number; any thread.
std::vector<CardReader> cardReaders();

struct CardServiceState {
    DWORD state = 0;  // SERVICE_RUNNING and others
    DWORD start = 0;  // SERVICE_DEMAND_START and others
};

// Throws Win32Exception E_SMART_CARD with the system's number, ERROR_SERVICE_DOES_NOT_EXIST among them. Any
// thread.
CardServiceState cardServiceState();

}  // namespace Corvane
