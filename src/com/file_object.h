// FileObject: an open file as a stream, with its path and dates.
#pragma once

#include "com/base_stream.h"
#include "stream/file.h"

class CFileObject final : public CBaseStream<CFileObject, FileObject, IFileObject> {
public:
    // Made by a host itself it has no file and is as good as closed; FileSystemService opens files.
    CFileObject() : CFileObject(Corvane::File::closed()) {}
    explicit CFileObject(std::shared_ptr<Corvane::File> file) : CBaseStream(file), file_(std::move(file)) {}

    HRESULT STDMETHODCALLTYPE get_Path(BSTR* path) override;
    HRESULT STDMETHODCALLTYPE get_Name(BSTR* name) override;
    HRESULT STDMETHODCALLTYPE get_CreationDate(DATE* date) override;
    HRESULT STDMETHODCALLTYPE put_CreationDate(DATE date) override;
    HRESULT STDMETHODCALLTYPE get_AccessDate(DATE* date) override;
    HRESULT STDMETHODCALLTYPE put_AccessDate(DATE date) override;
    HRESULT STDMETHODCALLTYPE get_WriteDate(DATE* date) override;
    HRESULT STDMETHODCALLTYPE put_WriteDate(DATE date) override;
    HRESULT STDMETHODCALLTYPE Flush() override;

private:
    const std::shared_ptr<Corvane::File> file_;
};
