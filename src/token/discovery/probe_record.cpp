#include "token/discovery/probe_record.h"

#include <algorithm>
#include <new>

namespace Corvane::detail {
namespace {

using cryptoki::StepResult;

std::atomic<long> stuck;

StepResult resultOf(CK_RV value, const char* call) noexcept {
    return value == CKR_OK ? StepResult{} : StepResult{call, value};
}

void describe(const CK_FUNCTION_LIST& functions, CK_SLOT_ID slot, ProbedToken& token) noexcept {
    token.result = resultOf(functions.C_GetSlotInfo(slot, &token.slot), "C_GetSlotInfo");
    if (!token.result.failed())
        token.result = resultOf(functions.C_GetTokenInfo(slot, &token.token), "C_GetTokenInfo");
}

StepResult list(const CK_FUNCTION_LIST& functions, ProbeRecord& record) noexcept {
    record.phase = ProbePhase::listing;
    CK_SLOT_ID slots[ProbeRecord::mostTokens]{};
    CK_ULONG count = 0;
    CK_RV value = functions.C_GetSlotList(CK_TRUE, nullptr, &count);
    if (value == CKR_OK && count != 0) {
        count = ProbeRecord::mostTokens;
        value = functions.C_GetSlotList(CK_TRUE, slots, &count);
    }
    if (value != CKR_OK)
        return {"C_GetSlotList", value};
    record.phase = ProbePhase::describing;
    record.count = std::min(count, ProbeRecord::mostTokens);
    for (CK_ULONG i = 0; i < record.count; ++i)
        describe(functions, slots[i], record.tokens[i]);
    return {};
}

StepResult ask(cryptoki::Library& library, ProbeRecord& record) noexcept {
    record.phase = ProbePhase::loading;
    StepResult result = library.load(record.path);
    if (result.failed() || record.isGivenUp())
        return result;
    record.phase = ProbePhase::initializing;
    result = library.initialize();
    if (!result.failed())
        result = list(*library.functions(), record);
    record.phase = ProbePhase::finalizing;
    library.finalize();
    return result;
}

}  // namespace

const wchar_t* nameOf(ProbePhase phase) noexcept {
    static constexpr const wchar_t* names[] = {
        L"start new thread",      L"load pkcs11 module", L"initialize",          L"get active token slots",
        L"get token information", L"finalize",           L"unload pkcs11 module"};
    return names[static_cast<std::size_t>(phase)];
}

bool mayEnd(ProbePhase phase) noexcept {
    return phase > ProbePhase::loading && phase < ProbePhase::unloading;
}

bool isLoaderStuck() noexcept {
    return stuck != 0;
}

ProbeRecord* ProbeRecord::make(const std::wstring& path) {
    if (path.size() >= pathSize)
        throw std::bad_alloc();
    void* const memory =
        ::VirtualAlloc(nullptr, sizeof(ProbeRecord), MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
    if (!memory)
        throw std::bad_alloc();
    auto* const record = new (memory) ProbeRecord{};
    record->owners = 2;
    path.copy(record->path, path.size());
    return record;
}

void ProbeRecord::release() noexcept {
    if (--owners == 0)
        ::VirtualFree(this, 0, MEM_RELEASE);
}

void ProbeRecord::giveUp() noexcept {
    if (state.exchange(State::givenUp) == State::running)
        ++stuck;
}

DWORD WINAPI runProbe(void* data) noexcept {
    auto& record = *static_cast<ProbeRecord*>(data);
    {
        cryptoki::Library library;
        record.result = ask(library, record);
        record.phase = ProbePhase::unloading;
    }
    if (record.state.exchange(ProbeRecord::State::ended) == ProbeRecord::State::givenUp)
        --stuck;
    record.release();
    return 0;
}

}  // namespace Corvane::detail
