#include "token/cryptoki/driver_path.h"

#include "core/errors.h"
#include "core/exception.h"
#include "core/settings.h"

#include <optional>

namespace cryptoki {
namespace {

constexpr wchar_t jaCartaOfSystem[] = L"jcPKCS11-2.dll";

bool isSystemPreferred() {
    return Corvane::readNumberSetting(L"UseLocalPkcs11Drivers") == 0;
}

std::optional<std::wstring> ownJaCartaDriver() {
    auto path = Corvane::readTextSetting(L"Location");
    // With no folder before it the driver would come from the root of whatever drive is the current one.
    if (path && path->empty())
        return std::nullopt;
    if (path) {
        if (!path->ends_with(L'\\'))
            *path += L'\\';
        *path += L"pkcs11\\jcPKCS11.dll";
    }
    return path;
}

}  // namespace

std::wstring driverPathFor(std::wstring_view slot) {
    if (slot.find(jaCartaMark) != std::wstring_view::npos) {
        if (isSystemPreferred())
            return jaCartaOfSystem;
        if (auto path = ownJaCartaDriver())
            return *std::move(path);
        throw Corvane::Exception(Corvane::E_TOKEN_LOCATION);
    }
    if (slot.find(rutokenMark) != std::wstring_view::npos)
        return L"rtPKCS11ECP.dll";
    throw Corvane::Exception(Corvane::E_TOKEN_MODULE_PATH);
}

std::wstring jaCartaDriverPath() {
    return isSystemPreferred() ? jaCartaOfSystem : ownJaCartaDriver().value_or(jaCartaOfSystem);
}

}  // namespace cryptoki
