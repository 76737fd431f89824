#include "token/discovery/driver_probe.h"

#include "core/check.h"
#include "core/exception_text.h"
#include "core/handles.h"
#include "core/log.h"
#include "token/cryptoki/cryptoki_exception.h"
#include "token/cryptoki/module_file.h"
#include "token/cryptoki/module_use.h"
#include "token/discovery/probe_record.h"

#include <memory>

namespace Corvane::detail {
namespace {

constexpr wchar_t context[] = L"Corvane::detail::getTokens";

struct ReleaseRecord {
    void operator()(ProbeRecord* record) const noexcept { record->release(); }
};
using Record = std::unique_ptr<ProbeRecord, ReleaseRecord>;

// Keeps the code that the thread runs in memory. Taken beforehand: later it might wait for the loader.
class OwnCode {
public:
    OwnCode() noexcept {
        ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                             reinterpret_cast<const wchar_t*>(&runProbe), &module_);
    }
    ~OwnCode() {
        if (module_)
            ::FreeLibrary(module_);
    }
    OwnCode(const OwnCode&) = delete;
    OwnCode& operator=(const OwnCode&) = delete;

    void keep() noexcept { module_ = nullptr; }

private:
    HMODULE module_ = nullptr;
};

// Ends a thread that did not end in time, unless that would keep the loader's lock for ever. Until it is told
// to go on nothing is allocated here: it may stand inside the heap.
void giveUp(HANDLE thread, ProbeRecord& record) noexcept {
    ::SuspendThread(thread);
    CONTEXT registers{};
    registers.ContextFlags = CONTEXT_CONTROL;
    // Suspending is only asked for; who reads the registers has waited until it is done.
    ::GetThreadContext(thread, &registers);
    if (mayEnd(record.phase) && ::TerminateThread(thread, 0)) {
        ::WaitForSingleObject(thread, INFINITE);
        record.release();
    } else {
        record.giveUp();
        ::ResumeThread(thread);
    }
}

bool isInTime(HANDLE thread, DWORD milliseconds) {
    writeLog(LogLevel::debug, context, L"wait end thread");
    return ::WaitForSingleObject(thread, milliseconds) == WAIT_OBJECT_0;
}

void startProbe(ThreadHandle& thread, ProbeRecord& record) {
    writeLog(LogLevel::debug, context, L"start new thread");
    thread.attach(::CreateThread(nullptr, 0, runProbe, &record, 0, nullptr));
    if (!thread)
        record.release();
    checkWin32(static_cast<bool>(thread), E_ACTIVEX, L"CreateThread");
}

// The steps come into the log only now: the thread itself writes nothing.
void logSteps(ProbePhase last) {
    for (auto phase = ProbePhase::loading; phase <= last; phase = ProbePhase{static_cast<long>(phase) + 1})
        writeLog(LogLevel::debug, context, nameOf(phase));
}

void logFailure(const wchar_t* what, const cryptoki::StepResult& result, const std::wstring& path) {
    try {
        cryptoki::throwStep(result, path);
    } catch (const std::exception& exception) {
        writeLog(LogLevel::error, context, what, textOf(exception));
    }
}

std::vector<Token> readTokens(const ProbeRecord& record) {
    std::vector<Token> tokens;
    for (CK_ULONG i = 0; i < record.count; ++i) {
        const ProbedToken& probed = record.tokens[i];
        if (probed.result.failed())
            logFailure(L"token was not read: ", probed.result, record.path);
        else
            tokens.push_back(makeToken(probed.slot, probed.token));
    }
    return tokens;
}

std::vector<Token> probeFile(const std::wstring& path, DWORD milliseconds) {
    cryptoki::ModuleUse use(path, milliseconds);
    OwnCode code;
    const Record record(ProbeRecord::make(path));
    ThreadHandle thread;
    startProbe(thread, *record);
    // The thread, not an event of it: its last instructions are ours too.
    if (!isInTime(thread.get(), milliseconds)) {
        giveUp(thread.get(), *record);
        use.lose();
        code.keep();
        logSteps(record->phase);
        writeLog(LogLevel::error, context, L"the driver does not answer and is given up: ", path);
        return {};
    }
    logSteps(record->phase);
    if (record->result.failed()) {
        logFailure(L"token driver was not found: ", record->result, path);
        return {};
    }
    return readTokens(*record);
}

}  // namespace

std::vector<Token> probeDriver(const std::wstring& name, DWORD milliseconds) {
    if (isLoaderStuck()) {
        writeLog(LogLevel::error, context,
                 L"token driver was not found: another one has not come out of the loader");
        return {};
    }
    const std::wstring path = cryptoki::findModuleFile(name);
    if (path.empty()) {
        writeLog(LogLevel::info, context, L"token driver was not found");
        return {};
    }
    try {
        return probeFile(path, milliseconds);
    } catch (const cryptoki::CryptokiException& exception) {
        writeLog(LogLevel::error, context, L"token driver was not found: ", textOf(exception));
        return {};
    }
}

}  // namespace Corvane::detail
