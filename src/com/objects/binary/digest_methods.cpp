// Checksums and digests of BinaryObjectService.
#include "binary/crc32.h"
#include "binary/md5.h"
#include "binary/sha256.h"
#include "com/async/operation_token.h"
#include "com/objects/binary/base_stream.h"
#include "com/objects/binary/binary_object.h"
#include "com/objects/binary/binary_object_service.h"
#include "stream/digest.h"

using namespace Corvane;
using namespace Corvane::Com;

namespace {

auto crc32Of(IBinaryObject* binary, ULONG initCrc) {
    return Operation{L"Corvane::Binary::getCrc32",
                     [bytes = bytesOf(binary), initCrc] { return Binary::getCrc32(*bytes, initCrc); }};
}

auto md5Of(IBinaryObject* binary) {
    return Operation{L"Corvane::Binary::getMd5",
                     [bytes = bytesOf(binary)] { return Binary::getMd5(*bytes); }};
}

auto sha256Of(IBinaryObject* binary) {
    return Operation{L"Corvane::Binary::getSha256",
                     [bytes = bytesOf(binary)] { return Binary::getSha256(*bytes); }};
}

// `digest`(stream, progress) is the function of that name.
template <class Digest>
auto ofStream(const wchar_t* name, Digest digest, ::IBinaryStream* argument, const VARIANT& token) {
    return Operation{name, [stream = streamOf(argument), progress = progressOf(token), digest] {
                         return digest(*stream, progress);
                     }};
}

}  // namespace

HRESULT CBinaryObjectService::GetCrc32(IBinaryObject* binary, ULONG initCrc, ULONG* crc) {
    return serviceFrame(L"CBinaryObjectService::GetCrc32", [&] { run(crc, crc32Of(binary, initCrc)); });
}

HRESULT CBinaryObjectService::GetCrc32Async(IBinaryObject* binary, ULONG initCrc, IDispatch* pCallback) {
    return serviceFrame(L"CBinaryObjectService::GetCrc32Async",
                        [&] { start(pCallback, crc32Of(binary, initCrc)); });
}

HRESULT CBinaryObjectService::GetCrc32StreamAsync(::IBinaryStream* stream, IDispatch* pCallback,
                                                  VARIANT token) {
    return serviceFrame(L"CBinaryObjectService::GetCrc32StreamAsync", [&] {
        start(pCallback, ofStream(L"Corvane::Stream::getCrc32", &Stream::getCrc32, stream, token));
    });
}

HRESULT CBinaryObjectService::GetMd5(IBinaryObject* binary, IBinaryObject** digest) {
    return serviceFrame(L"CBinaryObjectService::GetMd5", [&] { run(digest, md5Of(binary)); });
}

HRESULT CBinaryObjectService::GetMd5Async(IBinaryObject* binary, IDispatch* pCallback) {
    return serviceFrame(L"CBinaryObjectService::GetMd5Async", [&] { start(pCallback, md5Of(binary)); });
}

HRESULT CBinaryObjectService::GetMd5StreamAsync(::IBinaryStream* stream, IDispatch* pCallback,
                                                VARIANT token) {
    return serviceFrame(L"CBinaryObjectService::GetMd5StreamAsync", [&] {
        start(pCallback, ofStream(L"Corvane::Stream::getMd5", &Stream::getMd5, stream, token));
    });
}

HRESULT CBinaryObjectService::GetSHA256(IBinaryObject* binary, IBinaryObject** digest) {
    return serviceFrame(L"CBinaryObjectService::GetSHA256", [&] { run(digest, sha256Of(binary)); });
}

HRESULT CBinaryObjectService::GetSHA256Async(IBinaryObject* binary, IDispatch* pCallback) {
    return serviceFrame(L"CBinaryObjectService::GetSHA256Async", [&] { start(pCallback, sha256Of(binary)); });
}

HRESULT CBinaryObjectService::GetSHA256StreamAsync(::IBinaryStream* stream, IDispatch* pCallback,
                                                   VARIANT token) {
    return serviceFrame(L"CBinaryObjectService::GetSHA256StreamAsync", [&] {
        start(pCallback, ofStream(L"Corvane::Stream::getSha256", &Stream::getSha256, stream, token));
    });
}
