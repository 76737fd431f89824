#include "token/cryptoki/library.h"

#include "core/errors.h"
#include "core/exception.h"
#include "core/log.h"
#include "core/system_exception.h"
#include "token/cryptoki/cryptoki_exception.h"
#include "token/cryptoki/library_exception.h"

#include <string_view>

namespace cryptoki {
namespace {

constexpr std::string_view loadLibrary = "LoadLibrary";
constexpr std::string_view getProcAddress = "GetProcAddress";

// As long as it lives, the system reports what is wrong with a file instead of showing it.
class QuietLoading {
public:
    QuietLoading() noexcept { ::SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &mode_); }
    ~QuietLoading() { ::SetThreadErrorMode(mode_, nullptr); }
    QuietLoading(const QuietLoading&) = delete;
    QuietLoading& operator=(const QuietLoading&) = delete;

private:
    DWORD mode_ = 0;
};

}  // namespace

StepResult Library::load(const wchar_t* path) noexcept {
    const QuietLoading quiet;
    library_.attach(::LoadLibraryExW(path, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
    if (!library_)
        return {loadLibrary.data(), CKR_OK, ::GetLastError()};
    ::SetLastError(ERROR_SUCCESS);
    const FARPROC address = ::GetProcAddress(library_.get(), "C_GetFunctionList");
    if (!address)
        return {getProcAddress.data(), CKR_OK, ::GetLastError()};
    CK_FUNCTION_LIST* functions = nullptr;
    const CK_RV value =
        reinterpret_cast<CK_C_GetFunctionList>(reinterpret_cast<void (*)()>(address))(&functions);
    if (value != CKR_OK)
        return {"CK_FUNCTION_LIST", value};
    if (!functions)
        return {getProcAddress.data(), CKR_OK, ERROR_SUCCESS};
    functions_ = functions;
    return {};
}

StepResult Library::initialize() noexcept {
    const CK_RV value = functions_->C_Initialize(nullptr);
    if (value != CKR_OK)
        return {"C_Initialize", value};
    initialization_.attach(functions_);
    return {};
}

void throwStep(const StepResult& result, const std::wstring& path) {
    const std::string_view call = result.call;
    const bool isLoading = call == loadLibrary;
    if (!isLoading && call != getProcAddress)
        CryptokiCalls::fail(result.value, result.call);
    const wchar_t* const name = isLoading ? L"LoadLibrary" : L"GetProcAddress";
    Corvane::writeLog(Corvane::LogLevel::error, name, Corvane::hexNumber(result.error), L" ", path);
    if (result.error == ERROR_SUCCESS)
        throw Corvane::Exception(Corvane::E_TOKEN_FUNCTION_LIST);
    // The file is there, so it is another one that it needs.
    const bool isDependency = isLoading && result.error == ERROR_MOD_NOT_FOUND;
    throw LibraryException(result.error, name, isDependency ? path : std::wstring());
}

}  // namespace cryptoki
