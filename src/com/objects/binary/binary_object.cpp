#include "com/objects/binary/binary_object.h"

#include "binary/base64.h"
#include "binary/crc32.h"
#include "binary/hex.h"
#include "binary/text.h"
#include "binary/xml_encoding.h"
#include "com/objects/binary/base_stream.h"
#include "com/runtime/arguments.h"
#include "core/check.h"
#include "core/log.h"
#include "core/wide_text.h"
#include "files/file.h"

#include <cmath>
#include <mutex>
#include <shared_mutex>
#include <span>

using namespace Corvane;
using namespace Corvane::Com;

namespace {

// A one-dimensional array of bytes as scripts can index it: VARIANTs of VT_UI1.
Variant byteArray(std::span<const std::uint8_t> bytes) {
    SafeArray array(VT_VARIANT, static_cast<ULONG>(bytes.size()));
    {
        const SafeArray::Elements<VARIANT> elements(array);
        VARIANT* element = elements.data();
        for (const std::uint8_t byte : bytes) {
            V_VT(element) = VT_UI1;
            V_UI1(element) = byte;
            ++element;
        }
    }
    Variant result;
    V_VT(&result.get()) = VT_ARRAY | VT_VARIANT;
    V_ARRAY(&result.get()) = array.detach();
    return result;
}

}  // namespace

CBinaryObject::CBinaryObject(SharedBytes bytes, SharedAccess access) : bytes_(std::move(bytes)) {
    setAccess(std::move(access));
    if (std::uint64_t{bytes_->size()} > largestBinary)
        throw Exception(E_BINARY_MAX_SIZE);
}

SharedBytes CBinaryObject::bytes() const {
    const std::shared_lock guard(mutex_);
    return bytes_;
}

HRESULT CBinaryObject::get_Size(ULONG* size) {
    if (!size)
        return E_POINTER;
    const SharedBytes held = bytes();
    *size = static_cast<ULONG>(held ? held->size() : 0);
    return S_OK;
}

HRESULT CBinaryObject::GetByte(double byteIndex, unsigned char* value) {
    if (!value)
        return E_POINTER;
    *value = 0;
    const SharedBytes held = bytes();
    const double size = held ? static_cast<double>(held->size()) : 0;
    const bool within = byteIndex >= 0 && byteIndex < size;  // no for NaN
    if (!within || byteIndex != std::trunc(byteIndex))
        return reportError(classId(), E_BINARY_OUT_OF_RANGE);
    *value = (*held)[static_cast<std::size_t>(byteIndex)];
    return S_OK;
}

HRESULT CBinaryObject::Equals(IBinaryObject* pOtherBinaryObject, VARIANT_BOOL* equal) {
    return frame(L"CBinaryObject::Equals", [&] {
        const SharedBytes right = bytesOf(pOtherBinaryObject);
        const SharedBytes left = bytes();
        give(equal, variantBool(left ? *left == *right : right->empty()));
    });
}

HRESULT CBinaryObject::ToBase64(BSTR* text) {
    return frame(L"CBinaryObject::ToBase64", [&] {
        const SharedBytes held = bytes();
        if (!held)
            return;
        Bstr result =
            Bstr::uninitialized(getBinToBase64RequiredSize(static_cast<std::int64_t>(held->size()), 0));
        encodeBase64(*held, 0, result.get());
        give(text, std::move(result));
    });
}

HRESULT CBinaryObject::ToHexString(BSTR* text) {
    return frame(L"CBinaryObject::ToHexString", [&] {
        const SharedBytes held = bytes();
        if (!held)
            return give(text, std::wstring_view());
        Bstr result = Bstr::uninitialized(held->size() * 2);
        encodeHex(*held, result.get());
        give(text, std::move(result));
    });
}

HRESULT CBinaryObject::ToString(ULONG codePage, BSTR* text) {
    return frame(L"CBinaryObject::ToString", [&] {
        const SharedBytes held = bytes();
        give(text, multiToWide(codePage, held ? Binary::toString(*held, 0) : std::string()));
    });
}

HRESULT CBinaryObject::ToUnicodeString(BSTR* text) {
    return frame(L"CBinaryObject::ToUnicodeString", [&] {
        const SharedBytes held = bytes();
        if (!held)
            return;
        writeLog(LogLevel::debug, L"CBinaryObject::ToUnicodeString", L"[in] size: ", held->size());
        Bstr result = Bstr::uninitialized(held->size() / sizeof(OLECHAR));
        std::memcpy(result.get(), held->data(), held->size() / sizeof(OLECHAR) * sizeof(OLECHAR));
        give(text, std::move(result));
    });
}

HRESULT CBinaryObject::ToArray(double offset, double count, VARIANT* bytes) {
    return frame(L"CBinaryObject::ToArray", [&] {
        if (!bytes)
            throw SilentFailure{E_POINTER};
        const std::size_t begin = countOf(offset);
        const std::size_t most = countOf(count);
        const SharedBytes held = this->bytes();
        // Of nothing there is nothing to take, wherever it is to begin.
        give(bytes, byteArray(held && most != 0 ? Stream::part(*held, begin, most)
                                                : std::span<const std::uint8_t>()));
    });
}

HRESULT CBinaryObject::ToFile(BSTR filePath) {
    return frame(L"CBinaryObject::ToFile", [&] {
        checkAccess(true);
        const SharedBytes held = bytes();
        writeFile(std::wstring(viewOf(filePath)),
                  held ? std::span<const std::uint8_t>(*held) : std::span<const std::uint8_t>());
    });
}

HRESULT CBinaryObject::GetCrc32(ULONG* crc) {
    return frame(L"CBinaryObject::GetCrc32", [&] {
        const SharedBytes held = bytes();
        give(crc, ULONG{held ? Binary::getCrc32(*held, 0) : 0});
    });
}

HRESULT CBinaryObject::ToXmlString(BSTR* text) {
    return frame(L"CBinaryObject::ToXmlString", [&] {
        const SharedBytes held = bytes();
        give(text, Binary::toXmlString(held ? std::span<const std::uint8_t>(*held)
                                            : std::span<const std::uint8_t>()));
    });
}

HRESULT CBinaryObject::Reset() {
    SharedBytes dropped;
    const std::lock_guard guard(mutex_);
    dropped.swap(bytes_);
    return S_OK;
}

namespace Corvane::Com {

namespace {

SharedBytes bytesBehind(IUnknown* object) {
    SharedBytes bytes = resolve<CBinaryObject>(object)->bytes();
    return bytes ? bytes : std::make_shared<Bytes>();
}

}  // namespace

SharedBytes bytesOf(IBinaryObject* object) {
    return bytesBehind(object);
}

SharedBytes optionalBytesOf(const VARIANT& argument) {
    const ComPtr<IUnknown> object = optionalObject(argument);
    return object ? bytesBehind(object.get()) : nullptr;
}

ComPtr<CBinaryObject> makeBinary(Bytes bytes) {
    return makeObject<CBinaryObject>(std::make_shared<Bytes>(std::move(bytes)), PageAccess::checked());
}

}  // namespace Corvane::Com
