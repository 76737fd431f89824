#include "com/objects/binary/binary_object_service.h"

#include "binary/base64.h"
#include "binary/hex.h"
#include "com/objects/binary/binary_object.h"
#include "com/objects/binary/binary_stream_object.h"
#include "com/runtime/arguments.h"
#include "core/log.h"
#include "core/wide_text.h"
#include "files/file.h"

using namespace Corvane;
using namespace Corvane::Com;

HRESULT CBinaryObjectService::CreateStream(::IBinaryStream** stream) {
    return serviceFrame(L"CBinaryObjectService::CreateStream",
                        [&] { give(stream, makeObject<CBinaryStream>(PageAccess::checked())); });
}

HRESULT CBinaryObjectService::BinaryObjectFromBase64(BSTR base64String, IBinaryObject** binary) {
    return serviceFrame(L"CBinaryObjectService::BinaryObjectFromBase64",
                        [&] { give(binary, makeBinary(base64ToBin(viewOf(base64String)))); });
}

HRESULT CBinaryObjectService::BinaryObjectFromHex(BSTR hexString, IBinaryObject** binary) {
    return serviceFrame(L"CBinaryObjectService::BinaryObjectFromHex",
                        [&] { give(binary, makeBinary(hexToBin(viewOf(hexString)))); });
}

HRESULT CBinaryObjectService::BinaryObjectFromFile(BSTR filePath, IBinaryObject** binary) {
    return serviceFrame(L"CBinaryObjectService::BinaryObjectFromFile",
                        [&] { give(binary, makeBinary(readFile(std::wstring(viewOf(filePath))))); });
}

HRESULT CBinaryObjectService::BinaryObjectFromString(BSTR inputString, ULONG codePage,
                                                     IBinaryObject** binary) {
    return serviceFrame(L"CBinaryObjectService::BinaryObjectFromString", [&] {
        const std::string text = wideToMulti(codePage, viewOf(inputString));
        give(binary, makeBinary(Bytes(text.begin(), text.end())));
    });
}

HRESULT CBinaryObjectService::BinaryObjectFromUnicodeString(BSTR inputString, IBinaryObject** binary) {
    return serviceFrame(L"CBinaryObjectService::BinaryObjectFromUnicodeString", [&] {
        const std::wstring_view text = viewOf(inputString);
        writeLog(LogLevel::debug, L"CBinaryObjectService::BinaryObjectFromUnicodeString", L"[in] length: ",
                 text.size());
        const auto* first = reinterpret_cast<const std::uint8_t*>(text.data());
        give(binary, makeBinary(Bytes(first, first + text.size() * sizeof(wchar_t))));
    });
}
