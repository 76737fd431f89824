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

std::wstring textOfFailure(const cryptoki::StepResult& result, const std::wstring& path) {
    try {
        cryptoki::throwStep(result, path);
    } catch (const std::exception& exception) {
        return textOf(exception);
    }
}

void readTokens(const ProbeRecord& record, std::vector<Token>& tokens) {
    for (CK_ULONG i = 0; i < record.count; ++i) {
        const ProbedToken& probed = record.tokens[i];
        if (probed.result.failed())
            writeLog(LogLevel::error, context, L"token was not read: ",
                     textOfFailure(probed.result, record.path));
        else
            tokens.push_back(makeToken(probed.slot, probed.token));
    }
}

// What is left of a time that began at `start`.
DWORD timeLeft(ULONGLONG start, DWORD milliseconds) noexcept {
    const ULONGLONG passed = ::GetTickCount64() - start;
    return passed < milliseconds ? milliseconds - static_cast<DWORD>(passed) : 0;
}

void probeFile(ProbedDriver& driver, DWORD milliseconds) {
    const ULONGLONG start = ::GetTickCount64();
    cryptoki::ModuleUse use(driver.path, milliseconds);
    OwnCode code;
    const Record record(ProbeRecord::make(driver.path));
    ThreadHandle thread;
    startProbe(thread, *record);
    // The thread, not an event of it: its last instructions are ours too.
    const bool isDone = isInTime(thread.get(), timeLeft(start, milliseconds));
    if (!isDone) {
        giveUp(thread.get(), *record);
        use.lose();
        code.keep();
    }
    logSteps(record->phase);
    if (!isDone) {
        driver.failure = L"the driver does not answer and is given up";
    } else if (record->result.failed()) {
        driver.failure = textOfFailure(record->result, driver.path);
        driver.error = record->result.error;
    } else {
        readTokens(*record, driver.tokens);
    }
}

ProbedDriver probe(const std::wstring& name, DWORD milliseconds) {
    ProbedDriver driver;
    if (isLoaderStuck()) {
        driver.failure = L"another driver has not come out of the loader";
        return driver;
    }
    driver.path = cryptoki::findModuleFile(name);
    if (driver.path.empty()) {
        driver.failure = L"there is no such file";
        return driver;
    }
    try {
        probeFile(driver, milliseconds);
    } catch (const cryptoki::CryptokiException& exception) {
        driver.failure = textOf(exception);
    }
    return driver;
}

}  // namespace

ProbedDriver probeDriver(const std::wstring& name, DWORD milliseconds) {
    ProbedDriver driver = probe(name, milliseconds);
    if (!driver.failure.empty())
        writeLog(LogLevel::warning, context, L"token driver was not found: ", driver.failure);
    return driver;
}

}  // namespace Corvane::detail
