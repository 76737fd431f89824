#include "com/compression_service.h"

#include "com/arguments.h"
#include "com/base_stream.h"
#include "com/binary_object.h"
#include "com/stream_operation.h"
#include "com/zip_archive.h"
#include "compression/gzip.h"
#include "compression/zip.h"
#include "compression/zip_folder.h"
#include "core/errors.h"
#include "core/log.h"

#include <string>
#include <utility>

using namespace Corvane;
using namespace Corvane::Com;

namespace {

constexpr wchar_t addFromDiskName[] = L"Corvane::Compression::addFromDisk";

// The result of `convert`(input, output), a function of that name.
template <class Convert>
ComPtr<CBinaryObject> converted(const wchar_t* name, IBinaryObject* argument, Convert&& convert) {
    const SharedBytes input = bytesOf(argument);
    writeLog(LogLevel::debug, name, L"[in] size: ", input->size());
    Bytes output;
    namedCall(name, [&] { convert(*input, output); });
    return makeBinary(std::move(output));
}

// Starts `work`(input, output, progress), a function of that name.
template <class Work>
void startConversion(const wchar_t* name, ::IBinaryStream* input, ::IBinaryStream* output,
                     IDispatch* callback, const VARIANT& token, Work work) {
    SharedStream from = streamOf(input);
    SharedStream to = streamOf(output);
    logStream(name, L"input", *from);
    logStream(name, L"output", *to);
    startOperation(name, callback, token,
                   [from = std::move(from), to = std::move(to), work](const SharedProgress& progress) {
                       work(*from, *to, progress);
                   });
}

void compress(const std::wstring& path, const SharedStream& output, const SharedProgress& progress) {
    writeLog(LogLevel::debug, addFromDiskName, L"[in] path: ", path);
    logStream(addFromDiskName, L"output", *output);
    // An archive of its own, even where the stream already holds one.
    if (output->state().size != 0) {
        throw Exception(E_ZIP_OPEN);
    }
    Compression::ZipArchive archive(output);
    Compression::addFromDisk(archive, path, {}, progress);
}

}  // namespace

HRESULT CCompressionService::PKZip(IBinaryObject* pBinary, IBinaryObject** ppZipBinary) {
    return serviceFrame(L"CCompressionService::PKZip", [&] {
        give(ppZipBinary, converted(L"Corvane::Compression::zip", pBinary,
                                    [](const Bytes& in, Bytes& out) { Compression::zip(in, out); }));
    });
}

HRESULT CCompressionService::PKZipStreamAsync(::IBinaryStream* input, ::IBinaryStream* output,
                                              IDispatch* pCallback, VARIANT token) {
    return serviceFrame(L"CCompressionService::PKZipStreamAsync", [&] {
        startConversion(L"Corvane::Compression::zipFileAsync", input, output, pCallback, token,
                        [](auto& from, auto& to, const SharedProgress& progress) {
                            Compression::zipFileAsync(from, to, progress);
                        });
    });
}

HRESULT CCompressionService::PKUnzip(IBinaryObject* pZipBinary, IBinaryObject** ppBinary) {
    return serviceFrame(L"CCompressionService::PKUnzip", [&] {
        give(ppBinary, converted(L"Corvane::Compression::unzip", pZipBinary,
                                 [](const Bytes& in, Bytes& out) { Compression::unzip(in, out, 0); }));
    });
}

HRESULT CCompressionService::PKUnzipN(IBinaryObject* pZipBinary, UINT numFile, IBinaryObject** ppBinary) {
    return serviceFrame(L"CCompressionService::PKUnzipN", [&] {
        give(ppBinary, converted(L"Corvane::Compression::unzip", pZipBinary,
                                 [&](const Bytes& in, Bytes& out) { Compression::unzip(in, out, numFile); }));
    });
}

HRESULT CCompressionService::PKUnzipNStreamAsync(::IBinaryStream* input, ::IBinaryStream* output,
                                                 IDispatch* pCallback, UINT numFile, VARIANT token) {
    return serviceFrame(L"CCompressionService::PKUnzipNStreamAsync", [&] {
        startConversion(L"Corvane::Compression::unzipFileAsync", input, output, pCallback, token,
                        [numFile](auto& from, auto& to, const SharedProgress& progress) {
                            Compression::unzipFileAsync(from, to, numFile, progress);
                        });
    });
}

HRESULT CCompressionService::GZip(IBinaryObject* pBinary, IBinaryObject** ppGzipBinary) {
    return serviceFrame(L"CCompressionService::GZip", [&] {
        give(ppGzipBinary, converted(L"Corvane::Compression::gzip", pBinary,
                                     [](const Bytes& in, Bytes& out) { Compression::gzip(in, out); }));
    });
}

HRESULT CCompressionService::GZipStreamAsync(::IBinaryStream* input, ::IBinaryStream* output,
                                             IDispatch* pCallback, VARIANT token) {
    return serviceFrame(L"CCompressionService::GZipStreamAsync", [&] {
        startConversion(L"Corvane::Compression::gzipFileAsync", input, output, pCallback, token,
                        [](auto& from, auto& to, const SharedProgress& progress) {
                            Compression::gzipFileAsync(from, to, progress);
                        });
    });
}

HRESULT CCompressionService::GUnzip(IBinaryObject* pGzipBinary, IBinaryObject** ppBinary) {
    return serviceFrame(L"CCompressionService::GUnzip", [&] {
        give(ppBinary, converted(L"Corvane::Compression::ungzip", pGzipBinary, Compression::ungzip));
    });
}

HRESULT CCompressionService::GUnzipStreamAsync(::IBinaryStream* input, ::IBinaryStream* output,
                                               IDispatch* pCallback, VARIANT token) {
    return serviceFrame(L"CCompressionService::GUnzipStreamAsync", [&] {
        startConversion(L"Corvane::Compression::ungzipFileAsync", input, output, pCallback, token,
                        Compression::ungzipFileAsync);
    });
}

HRESULT CCompressionService::OpenZipArchive(::IBinaryStream* stream, IZipArchive** archive) {
    return serviceFrame(L"CCompressionService::OpenZipArchive", [&] {
        constexpr wchar_t name[] = L"Corvane::Compression::ZipArchive";
        SharedStream source = streamOf(stream);
        logStream(name, L"stream", *source);
        give(archive, makeObject<CZipArchive>(namedCall(name, [&] {
                 return std::make_shared<Compression::ZipArchive>(std::move(source));
             })));
    });
}

HRESULT CCompressionService::Compress(BSTR path, ::IBinaryStream* output) {
    return serviceFrame(L"CCompressionService::Compress", [&] {
        namedCall(addFromDiskName, [&] { compress(std::wstring(viewOf(path)), streamOf(output), nullptr); });
    });
}

HRESULT CCompressionService::CompressAsync(BSTR path, ::IBinaryStream* output, IDispatch* pCallback,
                                           VARIANT token) {
    return serviceFrame(L"CCompressionService::CompressAsync", [&] {
        startOperation(addFromDiskName, pCallback, token,
                       [source = std::wstring(viewOf(path)), to = streamOf(output)](
                           const SharedProgress& progress) { compress(source, to, progress); });
    });
}
