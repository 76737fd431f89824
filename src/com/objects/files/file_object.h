// FileObject: an open file as a stream, with its path and dates.
#pragma once

#include "com/objects/binary/base_stream.h"
#include "files/file.h"

class CFileObject final : public Corvane::Com::CBaseStream<CFileObject, FileObject, IFileObject> {
public:
    // Made by a host itself it has no file and is as good as closed; FileSystemService opens files.
    CFileObject() : CBaseStream(Corvane::File::closed()), file_(Corvane::File::closed()) {}
    explicit CFileObject(const std::shared_ptr<Corvane::File>& file)
        : CBaseStream(file, Corvane::Com::PageAccess::checked()), file_(file) {}

#include <methods/IFileObject.h>

private:
    const std::shared_ptr<Corvane::File> file_;
};
