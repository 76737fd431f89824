// BinaryObject: the one value type in which bytes cross the COM boundary.
#pragma once

#include "binary/bytes.h"
#include "com/object.h"
#include "core/lock.h"

#include <VetrelCorvane2_h.h>

class CBinaryObject final : public Corvane::Com::Object<CBinaryObject, BinaryObject, IBinaryObject> {
public:
    CBinaryObject() = default;
    // Throws Exception E_BINARY_MAX_SIZE beyond largestBinary.
    explicit CBinaryObject(Corvane::SharedBytes bytes);

    // The bytes, shared; null when the object holds none. Any thread.
    Corvane::SharedBytes bytes() const;

    HRESULT STDMETHODCALLTYPE get_Size(ULONG* size) override;
    HRESULT STDMETHODCALLTYPE GetByte(ULONG byteIndex, unsigned char* value) override;
    HRESULT STDMETHODCALLTYPE Equals(IBinaryObject* other, VARIANT_BOOL* equal) override;
    HRESULT STDMETHODCALLTYPE ToBase64(BSTR* text) override;
    HRESULT STDMETHODCALLTYPE ToHexString(BSTR* text) override;
    HRESULT STDMETHODCALLTYPE ToString(ULONG codePage, BSTR* text) override;
    HRESULT STDMETHODCALLTYPE ToUnicodeString(BSTR* text) override;
    HRESULT STDMETHODCALLTYPE ToArray(ULONG offset, ULONG count, VARIANT* bytes) override;
    HRESULT STDMETHODCALLTYPE ToFile(BSTR filePath) override;
    HRESULT STDMETHODCALLTYPE GetCrc32(ULONG* crc) override;
    HRESULT STDMETHODCALLTYPE ToXmlString(BSTR* text) override;
    HRESULT STDMETHODCALLTYPE Reset() override;

private:
    mutable Corvane::SharedMutex mutex_;  // guards the pointer; what it points to never changes
    Corvane::SharedBytes bytes_;
};

namespace Corvane::Com {

// The bytes behind an IBinaryObject argument, never null. Fails as resolve() does.
SharedBytes bytesOf(IBinaryObject* object);

// A new BinaryObject that holds the bytes.
ComPtr<CBinaryObject> makeBinary(Bytes bytes);

}  // namespace Corvane::Com
