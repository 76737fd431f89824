#include "com/binary_object.h"

#include "binary/base64.h"
#include "binary/crc32.h"
#include "binary/hex.h"
#include "binary/text.h"
#include "binary/xml_text.h"
#include "com/arguments.h"
#include "core/check.h"
#include "core/text.h"
#include "stream/file.h"

#include <algorithm>
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

CBinaryObject::CBinaryObject(SharedBytes bytes) : bytes_(std::move(bytes)) {
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

HRESULT CBinaryObject::GetByte(ULONG byteIndex, unsigned char* value) {
    if (!value)
        return E_POINTER;
    *value = 0;
    const SharedBytes held = bytes();
    if (!held || byteIndex >= held->size())
        return reportError(classId(), E_BINARY_OUT_OF_RANGE);
    *value = (*held)[byteIndex];
    return S_OK;
}

HRESULT CBinaryObject::Equals(IBinaryObject* other, VARIANT_BOOL* equal) {
    return frame(L"CBinaryObject::Equals", [&] {
        const SharedBytes right = bytesOf(other);
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
        Bstr result = Bstr::uninitialized(held->size() / sizeof(OLECHAR));
        std::memcpy(result.get(), held->data(), held->size() / sizeof(OLECHAR) * sizeof(OLECHAR));
        give(text, std::move(result));
    });
}

HRESULT CBinaryObject::ToArray(ULONG offset, ULONG count, VARIANT* bytes) {
    return frame(L"CBinaryObject::ToArray", [&] {
        if (!bytes)
            throw SilentFailure{E_POINTER};
        const SharedBytes held = this->bytes();
        const std::size_t size = held ? held->size() : 0;
        if (held && count != 0 && offset > size)
            throw Exception(E_OFFSET_OUT_OF_RANGE);
        const std::size_t taken = count == 0 || !held ? 0 : std::min<std::size_t>(count, size - offset);
        give(bytes, byteArray(taken == 0 ? std::span<const std::uint8_t>()
                                         : std::span(*held).subspan(offset, taken)));
    });
}

HRESULT CBinaryObject::ToFile(BSTR filePath) {
    return frame(L"CBinaryObject::ToFile", [&] {
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
        give(text, Binary::toXmlString(held ? *held : Bytes()));
    });
}

HRESULT CBinaryObject::Reset() {
    SharedBytes dropped;
    const std::lock_guard guard(mutex_);
    dropped.swap(bytes_);
    return S_OK;
}

namespace Corvane::Com {

SharedBytes bytesOf(IBinaryObject* object) {
    SharedBytes bytes = resolve<CBinaryObject>(object)->bytes();
    return bytes ? bytes : std::make_shared<Bytes>();
}

ComPtr<CBinaryObject> makeBinary(Bytes bytes) {
    return makeObject<CBinaryObject>(std::make_shared<Bytes>(std::move(bytes)));
}

}  // namespace Corvane::Com
