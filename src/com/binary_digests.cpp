// Checksums and digests of BinaryObjectService.
#include "binary/crc32.h"
#include "binary/md5.h"
#include "binary/sha256.h"
#include "com/arguments.h"
#include "com/binary_object.h"
#include "com/binary_object_service.h"
#include "com/named_call.h"
#include "com/stream_operation.h"
#include "stream/digest.h"

using namespace Corvane;
using namespace Corvane::Com;

HRESULT CBinaryObjectService::GetCrc32(IBinaryObject* binary, ULONG initCrc, ULONG* crc) {
    return serviceFrame(L"CBinaryObjectService::GetCrc32",
                        [&] { give(crc, ULONG{Binary::getCrc32(*bytesOf(binary), initCrc)}); });
}

HRESULT CBinaryObjectService::GetCrc32Async(IBinaryObject* binary, ULONG initCrc, IDispatch* pCallback) {
    return serviceFrame(L"CBinaryObjectService::GetCrc32Async", [&] {
        startAsync(pCallback, named(L"Corvane::Binary::getCrc32", [bytes = bytesOf(binary), initCrc] {
                       return Binary::getCrc32(*bytes, initCrc);
                   }));
    });
}

HRESULT CBinaryObjectService::GetCrc32StreamAsync(::IBinaryStream* stream, IDispatch* pCallback,
                                                  VARIANT token) {
    return serviceFrame(L"CBinaryObjectService::GetCrc32StreamAsync", [&] {
        startStreamOperation(L"Corvane::Stream::getCrc32", pCallback, streamOf(stream), token,
                             &Stream::getCrc32);
    });
}

HRESULT CBinaryObjectService::GetMd5(IBinaryObject* binary, IBinaryObject** digest) {
    return serviceFrame(L"CBinaryObjectService::GetMd5",
                        [&] { give(digest, makeBinary(Binary::getMd5(*bytesOf(binary)))); });
}

HRESULT CBinaryObjectService::GetMd5Async(IBinaryObject* binary, IDispatch* pCallback) {
    return serviceFrame(L"CBinaryObjectService::GetMd5Async", [&] {
        startAsync(pCallback, named(L"Corvane::Binary::getMd5",
                                    [bytes = bytesOf(binary)] { return Binary::getMd5(*bytes); }));
    });
}

HRESULT CBinaryObjectService::GetMd5StreamAsync(::IBinaryStream* stream, IDispatch* pCallback,
                                                VARIANT token) {
    return serviceFrame(L"CBinaryObjectService::GetMd5StreamAsync", [&] {
        startStreamOperation(L"Corvane::Stream::getMd5", pCallback, streamOf(stream), token, &Stream::getMd5);
    });
}

HRESULT CBinaryObjectService::GetSHA256(IBinaryObject* binary, IBinaryObject** digest) {
    return serviceFrame(L"CBinaryObjectService::GetSHA256",
                        [&] { give(digest, makeBinary(Binary::getSha256(*bytesOf(binary)))); });
}

HRESULT CBinaryObjectService::GetSHA256Async(IBinaryObject* binary, IDispatch* pCallback) {
    return serviceFrame(L"CBinaryObjectService::GetSHA256Async", [&] {
        startAsync(pCallback, named(L"Corvane::Binary::getSha256",
                                    [bytes = bytesOf(binary)] { return Binary::getSha256(*bytes); }));
    });
}

HRESULT CBinaryObjectService::GetSHA256StreamAsync(::IBinaryStream* stream, IDispatch* pCallback,
                                                   VARIANT token) {
    return serviceFrame(L"CBinaryObjectService::GetSHA256StreamAsync", [&] {
        startStreamOperation(L"Corvane::Stream::getSha256", pCallback, streamOf(stream), token,
                             &Stream::getSha256);
    });
}
