// FileSystemService: opens files, and works on files and folders by their paths.
#pragma once

#include "com/service_object.h"

#include <VetrelCorvane2_h.h>

class CFileSystemService final
    : public Corvane::Com::ServiceObject<CFileSystemService, FileSystemService, IFileSystemService> {
public:
    HRESULT STDMETHODCALLTYPE OpenFile(BSTR path, ULONG access, ULONG disposition, ULONG shareMode,
                                       IFileObject** file) override;
    HRESULT STDMETHODCALLTYPE CreateTempFile(VARIANT_BOOL keep, IFileObject** file) override;
    HRESULT STDMETHODCALLTYPE GetTempFolder(BSTR* path) override;
    HRESULT STDMETHODCALLTYPE FileExists(BSTR path, VARIANT_BOOL* exists) override;
    HRESULT STDMETHODCALLTYPE FolderExists(BSTR path, VARIANT_BOOL* exists) override;
    HRESULT STDMETHODCALLTYPE GetAttributes(BSTR path, ULONG* attributes) override;
    HRESULT STDMETHODCALLTYPE SetAttributes(BSTR path, ULONG attributes) override;
    HRESULT STDMETHODCALLTYPE GetLength(BSTR path, double* length) override;
    HRESULT STDMETHODCALLTYPE GetCreationDate(BSTR path, DATE* date) override;
    HRESULT STDMETHODCALLTYPE GetAccessDate(BSTR path, DATE* date) override;
    HRESULT STDMETHODCALLTYPE GetWriteDate(BSTR path, DATE* date) override;
    HRESULT STDMETHODCALLTYPE Copy(BSTR source, BSTR target, VARIANT_BOOL overwrite) override;
    HRESULT STDMETHODCALLTYPE Move(BSTR source, BSTR target, VARIANT_BOOL overwrite) override;
    HRESULT STDMETHODCALLTYPE Delete(BSTR path) override;
    HRESULT STDMETHODCALLTYPE CreateFolder(BSTR path) override;
    HRESULT STDMETHODCALLTYPE DeleteFolder(BSTR path, VARIANT_BOOL withContents) override;
    HRESULT STDMETHODCALLTYPE List(BSTR path, BSTR mask, BSTR* json) override;
};
