#include "com/objects/zip/zip_archive_object.h"

#include "com/async/operation_token.h"
#include "com/objects/binary/base_stream.h"
#include "com/objects/binary/binary_object.h"
#include "com/runtime/arguments.h"
#include "compression/zip_disk_date.h"
#include "compression/zip_entries_json.h"
#include "compression/zip_folder.h"
#include "core/errors.h"
#include "core/json.h"
#include "core/wide_text.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>

using namespace Corvane;
using namespace Corvane::Com;

namespace {

constexpr wchar_t extractName[] = L"Corvane::Compression::ZipArchive::extract";
constexpr wchar_t extractAllName[] = L"Corvane::Compression::extractToFolder";
constexpr wchar_t addName[] = L"Corvane::Compression::ZipArchive::add";
constexpr wchar_t addFolderName[] = L"Corvane::Compression::addFromDisk";

double numberIn(const Variant& value) {
    Variant number;
    if (isLeftOut(value) ||
        FAILED(::VariantChangeType(number.put(), const_cast<VARIANT*>(&value.get()), 0, VT_R8)))
        throw SilentFailure{DISP_E_TYPEMISMATCH};
    return V_R8(&number.get());
}

// An entry as scripts name it: by its name, or by its index as any kind of number.
std::size_t indexOf(const Compression::ZipArchive& archive, const VARIANT& entry) {
    const Variant value = plainValue(entry);
    if (V_VT(&value.get()) == VT_BSTR)
        return archive.find(toUtf8(viewOf(V_BSTR(&value.get()))));
    const double index = numberIn(value);
    const bool within = index >= 0 && index < std::numeric_limits<std::uint32_t>::max();  // no for NaN
    if (!within || index != std::floor(index))
        throw Exception(E_UNZIP_OUT_OF_RANGE);
    return static_cast<std::size_t>(index);
}

// No limit when it is left out, or 0.
std::uint64_t limitOf(const VARIANT& maxSize) {
    const Variant value = plainValue(maxSize);
    const std::uint64_t size = isLeftOut(value) ? 0 : sizeOf(numberIn(value));
    return size == 0 ? Compression::unlimitedSize : size;
}

// The same for content that becomes a BinaryObject.
std::uint64_t binaryLimitOf(const VARIANT& maxSize) {
    return std::min(limitOf(maxSize), largestBinary);
}

Compression::FolderExtraction optionsOf(const VARIANT& maxSize, VARIANT_BOOL overwrite) {
    return {.maxSize = limitOf(maxSize), .overwrite = overwrite != VARIANT_FALSE};
}

// What the methods do, with or without a record of progress.

auto extraction(CZipArchive::SharedArchive archive, const VARIANT& entry, const VARIANT& maxSize,
                SharedProgress progress) {
    const std::size_t index = indexOf(*archive, entry);
    return Operation{extractName,
                     [archive = std::move(archive), index, limit = binaryLimitOf(maxSize),
                      progress = std::move(progress)] { return archive->extract(index, limit, progress); }};
}

auto extraction(CZipArchive::SharedArchive archive, const VARIANT& entry, ::IBinaryStream* output,
                const VARIANT& maxSize, SharedProgress progress) {
    const std::size_t index = indexOf(*archive, entry);
    return Operation{extractName,
                     [archive = std::move(archive), index, to = streamOf(output), limit = limitOf(maxSize),
                      progress = std::move(progress)] { archive->extract(index, *to, limit, progress); }};
}

auto folderExtraction(CZipArchive::SharedArchive archive, BSTR folder, const VARIANT& maxSize,
                      VARIANT_BOOL overwrite, SharedProgress progress) {
    return Operation{extractAllName,
                     [archive = std::move(archive), to = std::wstring(viewOf(folder)),
                      options = optionsOf(maxSize, overwrite), progress = std::move(progress)] {
                         Compression::extractToFolder(*archive, to, options, progress);
                     }};
}

auto addition(CZipArchive::SharedArchive archive, BSTR name, IBinaryObject* data, SharedProgress progress) {
    return Operation{addName, [archive = std::move(archive), entry = Compression::zipNameOf(viewOf(name)),
                               content = bytesOf(data), progress = std::move(progress)] {
                         archive->add(entry, Compression::zipDateNow(), *content, progress);
                     }};
}

auto addition(CZipArchive::SharedArchive archive, BSTR name, ::IBinaryStream* input,
              SharedProgress progress) {
    return Operation{addName, [archive = std::move(archive), entry = Compression::zipNameOf(viewOf(name)),
                               from = streamOf(input), progress = std::move(progress)] {
                         archive->add(entry, Compression::zipDateNow(), *from, progress);
                     }};
}

auto folderAddition(CZipArchive::SharedArchive archive, BSTR path, BSTR prefix, SharedProgress progress) {
    return Operation{addFolderName,
                     [archive = std::move(archive), from = std::wstring(viewOf(path)),
                      under = Compression::zipNameOf(viewOf(prefix)), progress = std::move(progress)] {
                         Compression::addFromDisk(*archive, from, under, progress);
                     }};
}

}  // namespace

const CZipArchive::SharedArchive& CZipArchive::archive() const {
    if (!archive_)
        throw Exception(E_ZIP_ARCHIVE_STREAM_DISPOSE);
    return archive_;
}

HRESULT CZipArchive::get_Count(ULONG* count) {
    return frame(L"CZipArchive::get_Count",
                 [&] { give(count, static_cast<ULONG>(archive()->entries()->size())); });
}

HRESULT CZipArchive::get_Entries(BSTR* json) {
    return frame(L"CZipArchive::get_Entries",
                 [&] { give(json, writeJson(Compression::entriesJson(*archive()->entries()))); });
}

HRESULT CZipArchive::Find(BSTR name, ULONG* index) {
    return frame(L"CZipArchive::Find",
                 [&] { give(index, static_cast<ULONG>(archive()->find(toUtf8(viewOf(name))))); });
}

HRESULT CZipArchive::Extract(VARIANT entry, VARIANT maxSize, IBinaryObject** binary) {
    return frame(L"CZipArchive::Extract",
                 [&] { run(binary, extraction(archive(), entry, maxSize, nullptr)); });
}

HRESULT CZipArchive::ExtractAsync(VARIANT entry, IDispatch* pCallback, VARIANT maxSize, VARIANT token) {
    return frame(L"CZipArchive::ExtractAsync",
                 [&] { start(pCallback, extraction(archive(), entry, maxSize, progressOf(token))); });
}

HRESULT CZipArchive::ExtractStream(VARIANT entry, ::IBinaryStream* output, VARIANT maxSize) {
    return frame(L"CZipArchive::ExtractStream",
                 [&] { run(extraction(archive(), entry, output, maxSize, nullptr)); });
}

HRESULT CZipArchive::ExtractStreamAsync(VARIANT entry, ::IBinaryStream* output, IDispatch* pCallback,
                                        VARIANT maxSize, VARIANT token) {
    return frame(L"CZipArchive::ExtractStreamAsync",
                 [&] { start(pCallback, extraction(archive(), entry, output, maxSize, progressOf(token))); });
}

HRESULT CZipArchive::ExtractAll(BSTR folder, VARIANT maxSize, VARIANT_BOOL overwrite) {
    return frame(L"CZipArchive::ExtractAll",
                 [&] { run(folderExtraction(archive(), folder, maxSize, overwrite, nullptr)); });
}

HRESULT CZipArchive::ExtractAllAsync(BSTR folder, IDispatch* pCallback, VARIANT maxSize,
                                     VARIANT_BOOL overwrite, VARIANT token) {
    return frame(L"CZipArchive::ExtractAllAsync", [&] {
        start(pCallback, folderExtraction(archive(), folder, maxSize, overwrite, progressOf(token)));
    });
}

HRESULT CZipArchive::Add(BSTR name, IBinaryObject* pData) {
    return frame(L"CZipArchive::Add", [&] { run(addition(archive(), name, pData, nullptr)); });
}

HRESULT CZipArchive::AddAsync(BSTR name, IBinaryObject* pData, IDispatch* pCallback, VARIANT token) {
    return frame(L"CZipArchive::AddAsync",
                 [&] { start(pCallback, addition(archive(), name, pData, progressOf(token))); });
}

HRESULT CZipArchive::AddStream(BSTR name, ::IBinaryStream* input) {
    return frame(L"CZipArchive::AddStream", [&] { run(addition(archive(), name, input, nullptr)); });
}

HRESULT CZipArchive::AddStreamAsync(BSTR name, ::IBinaryStream* input, IDispatch* pCallback, VARIANT token) {
    return frame(L"CZipArchive::AddStreamAsync",
                 [&] { start(pCallback, addition(archive(), name, input, progressOf(token))); });
}

HRESULT CZipArchive::AddFolder(BSTR path, BSTR prefix) {
    return frame(L"CZipArchive::AddFolder", [&] { run(folderAddition(archive(), path, prefix, nullptr)); });
}

HRESULT CZipArchive::AddFolderAsync(BSTR path, IDispatch* pCallback, BSTR prefix, VARIANT token) {
    return frame(L"CZipArchive::AddFolderAsync",
                 [&] { start(pCallback, folderAddition(archive(), path, prefix, progressOf(token))); });
}

HRESULT CZipArchive::Close() {
    return frame(L"CZipArchive::Close", [&] {
        if (archive_)
            archive_->close();
    });
}
