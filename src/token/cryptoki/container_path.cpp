#include "token/cryptoki/container_path.h"

#include "core/errors.h"
#include "core/exception.h"

namespace cryptoki {
namespace {

constexpr std::wstring_view prefix = L"\\\\.\\";
constexpr wchar_t separator = L'\\';

}  // namespace

std::wstring makeContainerPath(std::wstring_view reader, std::wstring_view identifier) {
    return std::wstring(prefix).append(reader).append(1, separator).append(identifier);
}

ContainerPath parseContainerPath(std::wstring_view path) {
    const bool isComplete = path.starts_with(prefix);
    const std::wstring_view rest = isComplete ? path.substr(prefix.size()) : std::wstring_view();
    const std::size_t end = rest.find(separator);
    if (end == 0 || end == std::wstring_view::npos || end + 1 == rest.size() || end != rest.rfind(separator))
        throw Corvane::Exception(Corvane::E_TOKEN_CONTAINER_PATH);
    return {std::wstring(rest.substr(0, end)), std::wstring(rest.substr(end + 1))};
}

}  // namespace cryptoki
