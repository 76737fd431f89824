// CompressionService: zip and gzip, of bytes and of streams.
#pragma once

#include "com/service_object.h"

#include <VetrelCorvane2_h.h>

class CCompressionService final
    : public Corvane::Com::ServiceObject<CCompressionService, CompressionService, ICompressionService> {
public:
    HRESULT STDMETHODCALLTYPE PKZip(IBinaryObject* pBinary, IBinaryObject** ppZipBinary) override;
    HRESULT STDMETHODCALLTYPE PKZipStreamAsync(::IBinaryStream* input, ::IBinaryStream* output,
                                               IDispatch* pCallback, VARIANT token) override;
    HRESULT STDMETHODCALLTYPE PKUnzip(IBinaryObject* pZipBinary, IBinaryObject** ppBinary) override;
    HRESULT STDMETHODCALLTYPE PKUnzipN(IBinaryObject* pZipBinary, UINT numFile,
                                       IBinaryObject** ppBinary) override;
    HRESULT STDMETHODCALLTYPE PKUnzipNStreamAsync(::IBinaryStream* input, ::IBinaryStream* output,
                                                  IDispatch* pCallback, UINT numFile, VARIANT token) override;
    HRESULT STDMETHODCALLTYPE GZip(IBinaryObject* pBinary, IBinaryObject** ppGzipBinary) override;
    HRESULT STDMETHODCALLTYPE GZipStreamAsync(::IBinaryStream* input, ::IBinaryStream* output,
                                              IDispatch* pCallback, VARIANT token) override;
    HRESULT STDMETHODCALLTYPE GUnzip(IBinaryObject* pGzipBinary, IBinaryObject** ppBinary) override;
    HRESULT STDMETHODCALLTYPE GUnzipStreamAsync(::IBinaryStream* input, ::IBinaryStream* output,
                                                IDispatch* pCallback, VARIANT token) override;
    HRESULT STDMETHODCALLTYPE OpenZipArchive(::IBinaryStream* stream, IZipArchive** archive) override;
    HRESULT STDMETHODCALLTYPE Compress(BSTR path, ::IBinaryStream* output) override;
    HRESULT STDMETHODCALLTYPE CompressAsync(BSTR path, ::IBinaryStream* output, IDispatch* pCallback,
                                            VARIANT token) override;
};
