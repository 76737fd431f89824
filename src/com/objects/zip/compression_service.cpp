#include "com/objects/zip/compression_service.h"

#include "com/async/operation_token.h"
#include "com/objects/binary/base_stream.h"
#include "com/objects/binary/binary_object.h"
#include "com/objects/zip/zip_archive_object.h"
#include "com/runtime/arguments.h"
#include "compression/gzip.h"
#include "compression/zip.h"
#include "compression/zip_folder.h"
#include "core/errors.h"

#include <string>
#include <utility>

using namespace Corvane;
using namespace Corvane::Com;

namespace {

// Of bytes; `convert`(input, output) is the function of that name.
template <class Convert>
auto conversion(const wchar_t* name, IBinaryObject* argument, Convert convert) {
    return Operation{name, [input = bytesOf(argument), convert] {
                         Bytes output;
                         convert(*input, output);
                         return output;
                     }};
}

// Of streams; `convert`(input, output, progress) is the function of that name.
template <class Convert>
auto conversion(const wchar_t* name, ::IBinaryStream* input, ::IBinaryStream* output, const VARIANT& token,
                Convert convert) {
    return Operation{name, [from = streamOf(input), to = streamOf(output), progress = progressOf(token),
                            convert] { convert(*from, *to, progress); }};
}

auto unzipping(IBinaryObject* zip, UINT entry) {
    return conversion(L"Corvane::Compression::unzip", zip,
                      [entry](const Bytes& in, Bytes& out) { Compression::unzip(in, out, entry); });
}

// An archive of its own, even where the stream already holds one.
auto compressing(BSTR path, ::IBinaryStream* output, SharedProgress progress) {
    return Operation{
        L"Corvane::Compression::addFromDisk",
        [from = std::wstring(viewOf(path)), to = streamOf(output), progress = std::move(progress)] {
            if (to->state().size != 0)
                throw Exception(E_ZIP_OPEN);
            Compression::ZipArchive archive(to);
            Compression::addFromDisk(archive, from, {}, progress);
        }};
}

}  // namespace

HRESULT CCompressionService::PKZip(IBinaryObject* pBinary, IBinaryObject** ppZipBinary) {
    return serviceFrame(L"CCompressionService::PKZip", [&] {
        run(ppZipBinary, conversion(L"Corvane::Compression::zip", pBinary,
                                    [](const Bytes& in, Bytes& out) { Compression::zip(in, out); }));
    });
}

HRESULT CCompressionService::PKZipStreamAsync(::IBinaryStream* input, ::IBinaryStream* output,
                                              IDispatch* pCallback, VARIANT token) {
    return serviceFrame(L"CCompressionService::PKZipStreamAsync", [&] {
        start(pCallback, conversion(L"Corvane::Compression::zipFileAsync", input, output, token,
                                    [](auto& from, auto& to, const SharedProgress& progress) {
                                        Compression::zipFileAsync(from, to, progress);
                                    }));
    });
}

HRESULT CCompressionService::PKUnzip(IBinaryObject* pZipBinary, IBinaryObject** ppBinary) {
    return serviceFrame(L"CCompressionService::PKUnzip", [&] { run(ppBinary, unzipping(pZipBinary, 0)); });
}

HRESULT CCompressionService::PKUnzipN(IBinaryObject* pZipBinary, UINT numFile, IBinaryObject** ppBinary) {
    return serviceFrame(L"CCompressionService::PKUnzipN",
                        [&] { run(ppBinary, unzipping(pZipBinary, numFile)); });
}

HRESULT CCompressionService::PKUnzipNStreamAsync(::IBinaryStream* input, ::IBinaryStream* output,
                                                 IDispatch* pCallback, UINT numFile, VARIANT token) {
    return serviceFrame(L"CCompressionService::PKUnzipNStreamAsync", [&] {
        start(pCallback, conversion(L"Corvane::Compression::unzipFileAsync", input, output, token,
                                    [numFile](auto& from, auto& to, const SharedProgress& progress) {
                                        Compression::unzipFileAsync(from, to, numFile, progress);
                                    }));
    });
}

HRESULT CCompressionService::GZip(IBinaryObject* pBinary, IBinaryObject** ppGzipBinary) {
    return serviceFrame(L"CCompressionService::GZip", [&] {
        run(ppGzipBinary, conversion(L"Corvane::Compression::gzip", pBinary,
                                     [](const Bytes& in, Bytes& out) { Compression::gzip(in, out); }));
    });
}

HRESULT CCompressionService::GZipStreamAsync(::IBinaryStream* input, ::IBinaryStream* output,
                                             IDispatch* pCallback, VARIANT token) {
    return serviceFrame(L"CCompressionService::GZipStreamAsync", [&] {
        start(pCallback, conversion(L"Corvane::Compression::gzipFileAsync", input, output, token,
                                    [](auto& from, auto& to, const SharedProgress& progress) {
                                        Compression::gzipFileAsync(from, to, progress);
                                    }));
    });
}

HRESULT CCompressionService::GUnzip(IBinaryObject* pGzipBinary, IBinaryObject** ppBinary) {
    return serviceFrame(L"CCompressionService::GUnzip", [&] {
        run(ppBinary, conversion(L"Corvane::Compression::ungzip", pGzipBinary, Compression::ungzip));
    });
}

HRESULT CCompressionService::GUnzipStreamAsync(::IBinaryStream* input, ::IBinaryStream* output,
                                               IDispatch* pCallback, VARIANT token) {
    return serviceFrame(L"CCompressionService::GUnzipStreamAsync", [&] {
        start(pCallback, conversion(L"Corvane::Compression::ungzipFileAsync", input, output, token,
                                    Compression::ungzipFileAsync));
    });
}

HRESULT CCompressionService::OpenZipArchive(::IBinaryStream* stream, IZipArchive** archive) {
    return serviceFrame(L"CCompressionService::OpenZipArchive", [&] {
        give(archive, makeObject<CZipArchive>(std::make_shared<Compression::ZipArchive>(streamOf(stream))));
    });
}

HRESULT CCompressionService::Compress(BSTR path, ::IBinaryStream* output) {
    return serviceFrame(L"CCompressionService::Compress", [&] { run(compressing(path, output, nullptr)); });
}

HRESULT CCompressionService::CompressAsync(BSTR path, ::IBinaryStream* output, IDispatch* pCallback,
                                           VARIANT token) {
    return serviceFrame(L"CCompressionService::CompressAsync",
                        [&] { start(pCallback, compressing(path, output, progressOf(token))); });
}
