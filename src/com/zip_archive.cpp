#include "com/zip_archive.h"

#include "com/arguments.h"
#include "com/base_stream.h"
#include "com/binary_object.h"
#include "com/stream_operation.h"
#include "compression/zip_disk_date.h"
#include "compression/zip_entries_json.h"
#include "compression/zip_folder.h"
#include "core/errors.h"
#include "core/json.h"
#include "core/log.h"
#include "core/text.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
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
        FAILED(::VariantChangeType(number.put(), const_cast<VARIANT*>(&value.get()), 0, VT_R8))) {
        throw SilentFailure{DISP_E_TYPEMISMATCH};
    }
    return V_R8(&number.get());
}

// Arguments of `function`, which are told in the log.
std::wstring folderPath(const wchar_t* function, BSTR path) {
    writeLog(LogLevel::debug, function, L"[in] path: ", viewOf(path));
    return std::wstring(viewOf(path));
}

std::string entryName(const wchar_t* function, BSTR name) {
    writeLog(LogLevel::debug, function, L"[in] name: ", viewOf(name));
    return toUtf8(viewOf(name));
}

SharedStream entryStream(const wchar_t* function, ::IBinaryStream* argument) {
    SharedStream stream = streamOf(argument);
    logStream(function, L"stream", *stream);
    return stream;
}

// An entry as scripts name it: by its name, or by its index as any kind of number.
std::size_t indexOf(const Compression::ZipArchive& archive, const VARIANT& entry) {
    const Variant value = plainValue(entry);
    if (V_VT(&value.get()) == VT_BSTR) {
        return archive.find(entryName(extractName, V_BSTR(&value.get())));
    }
    const double index = numberIn(value);
    writeLog(LogLevel::debug, extractName, L"[in] index: ", std::setprecision(17), index);
    const bool within = index >= 0 && index < std::numeric_limits<std::uint32_t>::max();  // no for NaN
    if (!within || index != std::floor(index)) {
        throw Exception(E_UNZIP_OUT_OF_RANGE);
    }
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

}  // namespace

const CZipArchive::SharedArchive& CZipArchive::archive() const {
    if (!archive_) {
        throw Exception(E_ZIP_ARCHIVE_STREAM_DISPOSE);
    }
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
    return frame(L"CZipArchive::Extract", [&] {
        const std::size_t index = indexOf(*archive(), entry);
        give(binary, makeBinary(archive()->extract(index, binaryLimitOf(maxSize))));
    });
}

HRESULT CZipArchive::ExtractAsync(VARIANT entry, IDispatch* pCallback, VARIANT maxSize, VARIANT token) {
    return frame(L"CZipArchive::ExtractAsync", [&] {
        startOperation(extractName, pCallback, token,
                       [zip = archive(), index = indexOf(*archive(), entry),
                        limit = binaryLimitOf(maxSize)](const SharedProgress& progress) {
                           return std::make_shared<Bytes>(zip->extract(index, limit, progress));
                       });
    });
}

HRESULT CZipArchive::ExtractStream(VARIANT entry, ::IBinaryStream* output, VARIANT maxSize) {
    return frame(L"CZipArchive::ExtractStream", [&] {
        const std::size_t index = indexOf(*archive(), entry);
        archive()->extract(index, *entryStream(extractName, output), limitOf(maxSize), nullptr);
    });
}

HRESULT CZipArchive::ExtractStreamAsync(VARIANT entry, ::IBinaryStream* output, IDispatch* pCallback,
                                        VARIANT maxSize, VARIANT token) {
    return frame(L"CZipArchive::ExtractStreamAsync", [&] {
        startOperation(extractName, pCallback, token,
                       [zip = archive(), index = indexOf(*archive(), entry),
                        to = entryStream(extractName, output), limit = limitOf(maxSize)](
                           const SharedProgress& progress) { zip->extract(index, *to, limit, progress); });
    });
}

HRESULT CZipArchive::ExtractAll(BSTR folder, VARIANT maxSize, VARIANT_BOOL overwrite) {
    return frame(L"CZipArchive::ExtractAll", [&] {
        Compression::extractToFolder(*archive(), folderPath(extractAllName, folder),
                                     optionsOf(maxSize, overwrite), nullptr);
    });
}

HRESULT CZipArchive::ExtractAllAsync(BSTR folder, IDispatch* pCallback, VARIANT maxSize,
                                     VARIANT_BOOL overwrite, VARIANT token) {
    return frame(L"CZipArchive::ExtractAllAsync", [&] {
        startOperation(extractAllName, pCallback, token,
                       [zip = archive(), to = folderPath(extractAllName, folder),
                        options = optionsOf(maxSize, overwrite)](const SharedProgress& progress) {
                           Compression::extractToFolder(*zip, to, options, progress);
                       });
    });
}

HRESULT CZipArchive::Add(BSTR name, IBinaryObject* pData) {
    return frame(L"CZipArchive::Add", [&] {
        archive()->add(entryName(addName, name), Compression::zipDateNow(), *bytesOf(pData));
    });
}

HRESULT CZipArchive::AddAsync(BSTR name, IBinaryObject* pData, IDispatch* pCallback, VARIANT token) {
    return frame(L"CZipArchive::AddAsync", [&] {
        startOperation(addName, pCallback, token,
                       [zip = archive(), entry = entryName(addName, name),
                        content = bytesOf(pData)](const SharedProgress& progress) {
                           zip->add(entry, Compression::zipDateNow(), *content, progress);
                       });
    });
}

HRESULT CZipArchive::AddStream(BSTR name, ::IBinaryStream* input) {
    return frame(L"CZipArchive::AddStream", [&] {
        archive()->add(entryName(addName, name), Compression::zipDateNow(), *entryStream(addName, input),
                       nullptr);
    });
}

HRESULT CZipArchive::AddStreamAsync(BSTR name, ::IBinaryStream* input, IDispatch* pCallback, VARIANT token) {
    return frame(L"CZipArchive::AddStreamAsync", [&] {
        startOperation(addName, pCallback, token,
                       [zip = archive(), entry = entryName(addName, name),
                        from = entryStream(addName, input)](const SharedProgress& progress) {
                           zip->add(entry, Compression::zipDateNow(), *from, progress);
                       });
    });
}

HRESULT CZipArchive::AddFolder(BSTR path, BSTR prefix) {
    return frame(L"CZipArchive::AddFolder", [&] {
        Compression::addFromDisk(*archive(), folderPath(addFolderName, path), toUtf8(viewOf(prefix)),
                                 nullptr);
    });
}

HRESULT CZipArchive::AddFolderAsync(BSTR path, IDispatch* pCallback, BSTR prefix, VARIANT token) {
    return frame(L"CZipArchive::AddFolderAsync", [&] {
        startOperation(
            addFolderName, pCallback, token,
            [zip = archive(), from = folderPath(addFolderName, path), under = toUtf8(viewOf(prefix))](
                const SharedProgress& progress) { Compression::addFromDisk(*zip, from, under, progress); });
    });
}

HRESULT CZipArchive::Close() {
    return frame(L"CZipArchive::Close", [&] {
        if (archive_) {
            archive_->close();
        }
    });
}
