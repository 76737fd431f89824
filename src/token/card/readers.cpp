#include "token/card/readers.h"

#include "core/check.h"
#include "core/handles.h"
#include "token/card/terminal.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace Corvane {
namespace {

using CardContext = UniqueHandle<detail::CardContextTraits>;

CardContext openContext() {
    CardContext context;
    checkStatus(::SCardEstablishContext(SCARD_SCOPE_SYSTEM, nullptr, nullptr, context.put()), E_SMART_CARD,
                L"SCardEstablishContext");
    return context;
}

// One name behind the other, each with a zero at its end; an empty one is the last.
std::vector<CardReader> listReaders(SCARDCONTEXT context) {
    const auto call = [context](wchar_t* names, DWORD* size) {
        const LONG status = ::SCardListReadersW(context, nullptr, names, size);
        if (status != static_cast<LONG>(SCARD_E_NO_READERS_AVAILABLE))
            return status;
        *size = 0;
        return static_cast<LONG>(SCARD_S_SUCCESS);
    };
    const auto names = twoPass<StatusCalls, wchar_t, DWORD>(call, E_SMART_CARD, L"SCardListReaders");
    std::vector<CardReader> readers;
    for (std::wstring_view rest(names.data(), names.size()); !rest.empty() && rest.front() != L'\0';) {
        readers.push_back({std::wstring(rest.substr(0, rest.find(L'\0'))), 0, {}});
        rest.remove_prefix(std::min(readers.back().name.size() + 1, rest.size()));
    }
    return readers;
}

void readState(SCARDCONTEXT context, CardReader& reader) {
    SCARD_READERSTATEW state{};
    state.szReader = reader.name.c_str();
    state.dwCurrentState = SCARD_STATE_UNAWARE;  // so that the answer comes at once
    checkStatus(::SCardGetStatusChangeW(context, 0, &state, 1), E_SMART_CARD, L"SCardGetStatusChange");
    reader.state = state.dwEventState;
    const auto size = std::min<std::size_t>(state.cbAtr, std::size(state.rgbAtr));
    reader.atr.assign(state.rgbAtr, state.rgbAtr + size);
}

}  // namespace

std::vector<CardReader> cardReaders() {
    const CardContext context = openContext();
    std::vector<CardReader> readers = listReaders(context.get());
    for (CardReader& reader : readers)
        readState(context.get(), reader);
    return readers;
}

CardServiceState cardServiceState() {
    const ServiceHandle manager(::OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    checkWin32(static_cast<bool>(manager), E_SMART_CARD, L"OpenSCManagerW");
    const ServiceHandle service(
        ::OpenServiceW(manager.get(), L"SCardSvr", SERVICE_QUERY_STATUS | SERVICE_QUERY_CONFIG));
    checkWin32(static_cast<bool>(service), E_SMART_CARD, L"OpenServiceW");
    SERVICE_STATUS status{};
    checkWin32(::QueryServiceStatus(service.get(), &status), E_SMART_CARD, L"QueryServiceStatus");
    // The largest that the system gives.
    alignas(QUERY_SERVICE_CONFIGW) BYTE config[8192];
    DWORD size = 0;
    checkWin32(::QueryServiceConfigW(service.get(), reinterpret_cast<QUERY_SERVICE_CONFIGW*>(config),
                                     sizeof config, &size),
               E_SMART_CARD, L"QueryServiceConfigW");
    return {status.dwCurrentState, reinterpret_cast<const QUERY_SERVICE_CONFIGW*>(config)->dwStartType};
}

}  // namespace Corvane
