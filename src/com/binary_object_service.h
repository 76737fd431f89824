// BinaryObjectService: makes BinaryObjects from text and files.
#pragma once

#include "com/service_object.h"

#include <VetrelCorvane2_h.h>

class CBinaryObjectService final
    : public Corvane::Com::ServiceObject<CBinaryObjectService, BinaryObjectService, IBinaryObjectService> {
public:
    HRESULT STDMETHODCALLTYPE CreateStream(::IBinaryStream** stream) override;
    HRESULT STDMETHODCALLTYPE BinaryObjectFromBase64(BSTR base64String, IBinaryObject** binary) override;
    HRESULT STDMETHODCALLTYPE BinaryObjectFromHex(BSTR hexString, IBinaryObject** binary) override;
    HRESULT STDMETHODCALLTYPE BinaryObjectFromFile(BSTR filePath, IBinaryObject** binary) override;
    HRESULT STDMETHODCALLTYPE BinaryObjectFromString(BSTR inputString, ULONG codePage,
                                                     IBinaryObject** binary) override;
    HRESULT STDMETHODCALLTYPE BinaryObjectFromUnicodeString(BSTR inputString,
                                                            IBinaryObject** binary) override;

    HRESULT STDMETHODCALLTYPE GetCrc32(IBinaryObject* binary, ULONG initCrc, ULONG* crc) override;
    HRESULT STDMETHODCALLTYPE GetCrc32Async(IBinaryObject* binary, ULONG initCrc,
                                            IDispatch* pCallback) override;
    HRESULT STDMETHODCALLTYPE GetCrc32StreamAsync(::IBinaryStream* stream, IDispatch* pCallback,
                                                  VARIANT token) override;
    HRESULT STDMETHODCALLTYPE GetMd5(IBinaryObject* binary, IBinaryObject** digest) override;
    HRESULT STDMETHODCALLTYPE GetMd5Async(IBinaryObject* binary, IDispatch* pCallback) override;
    HRESULT STDMETHODCALLTYPE GetMd5StreamAsync(::IBinaryStream* stream, IDispatch* pCallback,
                                                VARIANT token) override;
    HRESULT STDMETHODCALLTYPE GetSHA256(IBinaryObject* binary, IBinaryObject** digest) override;
    HRESULT STDMETHODCALLTYPE GetSHA256Async(IBinaryObject* binary, IDispatch* pCallback) override;
    HRESULT STDMETHODCALLTYPE GetSHA256StreamAsync(::IBinaryStream* stream, IDispatch* pCallback,
                                                   VARIANT token) override;
};
