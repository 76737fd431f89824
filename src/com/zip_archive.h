// ZipArchive: the entries of a zip archive in a stream.
#pragma once

#include "com/object.h"
#include "compression/zip_archive.h"

#include <VetrelCorvane2_h.h>

#include <memory>

// Only CompressionService, which checks the page's site, makes one with an archive; any other is as if
// closed.
class CZipArchive final : public Corvane::Com::Object<CZipArchive, ZipArchive, IZipArchive> {
public:
    using SharedArchive = std::shared_ptr<Corvane::Compression::ZipArchive>;

    CZipArchive() = default;
    explicit CZipArchive(SharedArchive archive) noexcept : archive_(std::move(archive)) {}

    HRESULT STDMETHODCALLTYPE get_Count(ULONG* count) override;
    HRESULT STDMETHODCALLTYPE get_Entries(BSTR* json) override;
    HRESULT STDMETHODCALLTYPE Find(BSTR name, ULONG* index) override;
    HRESULT STDMETHODCALLTYPE Extract(VARIANT entry, VARIANT maxSize, IBinaryObject** binary) override;
    HRESULT STDMETHODCALLTYPE ExtractAsync(VARIANT entry, IDispatch* pCallback, VARIANT maxSize,
                                           VARIANT token) override;
    HRESULT STDMETHODCALLTYPE ExtractStream(VARIANT entry, ::IBinaryStream* output, VARIANT maxSize) override;
    HRESULT STDMETHODCALLTYPE ExtractStreamAsync(VARIANT entry, ::IBinaryStream* output, IDispatch* pCallback,
                                                 VARIANT maxSize, VARIANT token) override;
    HRESULT STDMETHODCALLTYPE ExtractAll(BSTR folder, VARIANT maxSize, VARIANT_BOOL overwrite) override;
    HRESULT STDMETHODCALLTYPE ExtractAllAsync(BSTR folder, IDispatch* pCallback, VARIANT maxSize,
                                              VARIANT_BOOL overwrite, VARIANT token) override;
    HRESULT STDMETHODCALLTYPE Add(BSTR name, IBinaryObject* pData) override;
    HRESULT STDMETHODCALLTYPE AddAsync(BSTR name, IBinaryObject* pData, IDispatch* pCallback,
                                       VARIANT token) override;
    HRESULT STDMETHODCALLTYPE AddStream(BSTR name, ::IBinaryStream* input) override;
    HRESULT STDMETHODCALLTYPE AddStreamAsync(BSTR name, ::IBinaryStream* input, IDispatch* pCallback,
                                             VARIANT token) override;
    HRESULT STDMETHODCALLTYPE AddFolder(BSTR path, BSTR prefix) override;
    HRESULT STDMETHODCALLTYPE AddFolderAsync(BSTR path, IDispatch* pCallback, BSTR prefix,
                                             VARIANT token) override;
    HRESULT STDMETHODCALLTYPE Close() override;

private:
    // Throws Exception E_ZIP_ARCHIVE_STREAM_DISPOSE when there is none.
    const SharedArchive& archive() const;

    const SharedArchive archive_;
};
