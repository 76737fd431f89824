#include "com/objects/files/file_system_service.h"

#include "com/objects/files/file_object.h"
#include "com/runtime/arguments.h"
#include "com/runtime/dates.h"
#include "core/json.h"
#include "core/moment.h"
#include "core/wide_text.h"
#include "files/file_system.h"

using namespace Corvane;
using namespace Corvane::Com;

namespace {

std::wstring textOf(BSTR argument) {
    return std::wstring(viewOf(argument));
}

std::wstring jsonOf(const std::vector<FileSystem::Entry>& entries) {
    Json::Value all(Json::arrayValue);
    for (const FileSystem::Entry& entry : entries) {
        Json::Value one(Json::objectValue);
        one["name"] = toUtf8(entry.name);
        one["directory"] = (entry.attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        one["size"] = Json::UInt64{entry.size};
        one["attributes"] = Json::UInt{entry.attributes};
        one["written"] = toUtf8(toUtcText(entry.written));
        all.append(std::move(one));
    }
    return writeJson(all);
}

}  // namespace

HRESULT CFileSystemService::OpenFile(BSTR path, ULONG access, ULONG disposition, ULONG shareMode,
                                     IFileObject** file) {
    return serviceFrame(L"CFileSystemService::OpenFile", [&] {
        const FileMode mode{access, shareMode, disposition, FILE_ATTRIBUTE_NORMAL};
        give(file, makeObject<CFileObject>(File::open(textOf(path), mode)));
    });
}

HRESULT CFileSystemService::CreateTempFile(VARIANT_BOOL keep, IFileObject** file) {
    return serviceFrame(L"CFileSystemService::CreateTempFile", [&] {
        give(file, makeObject<CFileObject>(FileSystem::createTemporaryFile(keep != VARIANT_FALSE)));
    });
}

HRESULT CFileSystemService::GetTempFolder(BSTR* path) {
    return serviceFrame(L"CFileSystemService::GetTempFolder",
                        [&] { give(path, FileSystem::temporaryFolder()); });
}

HRESULT CFileSystemService::FileExists(BSTR path, VARIANT_BOOL* exists) {
    return serviceFrame(L"CFileSystemService::FileExists",
                        [&] { give(exists, variantBool(FileSystem::fileExists(textOf(path)))); });
}

HRESULT CFileSystemService::FolderExists(BSTR path, VARIANT_BOOL* exists) {
    return serviceFrame(L"CFileSystemService::FolderExists",
                        [&] { give(exists, variantBool(FileSystem::folderExists(textOf(path)))); });
}

HRESULT CFileSystemService::GetAttributes(BSTR path, ULONG* attributes) {
    return serviceFrame(L"CFileSystemService::GetAttributes",
                        [&] { give(attributes, FileSystem::entryOf(textOf(path)).attributes); });
}

HRESULT CFileSystemService::SetAttributes(BSTR path, ULONG attributes) {
    return serviceFrame(L"CFileSystemService::SetAttributes",
                        [&] { FileSystem::setAttributes(textOf(path), attributes); });
}

HRESULT CFileSystemService::GetLength(BSTR path, double* length) {
    return serviceFrame(L"CFileSystemService::GetLength",
                        [&] { give(length, static_cast<double>(FileSystem::lengthOf(textOf(path)))); });
}

HRESULT CFileSystemService::GetCreationDate(BSTR path, DATE* date) {
    return serviceFrame(L"CFileSystemService::GetCreationDate",
                        [&] { give(date, toDate(FileSystem::timesOf(textOf(path)).creation)); });
}

HRESULT CFileSystemService::GetAccessDate(BSTR path, DATE* date) {
    return serviceFrame(L"CFileSystemService::GetAccessDate",
                        [&] { give(date, toDate(FileSystem::timesOf(textOf(path)).access)); });
}

HRESULT CFileSystemService::GetWriteDate(BSTR path, DATE* date) {
    return serviceFrame(L"CFileSystemService::GetWriteDate",
                        [&] { give(date, toDate(FileSystem::timesOf(textOf(path)).write)); });
}

HRESULT CFileSystemService::Copy(BSTR source, BSTR target, VARIANT_BOOL overwrite) {
    return serviceFrame(L"CFileSystemService::Copy", [&] {
        FileSystem::copyFile(textOf(source), textOf(target), overwrite != VARIANT_FALSE);
    });
}

HRESULT CFileSystemService::Move(BSTR source, BSTR target, VARIANT_BOOL overwrite) {
    return serviceFrame(L"CFileSystemService::Move", [&] {
        FileSystem::moveFile(textOf(source), textOf(target), overwrite != VARIANT_FALSE);
    });
}

HRESULT CFileSystemService::Delete(BSTR path) {
    return serviceFrame(L"CFileSystemService::Delete", [&] { FileSystem::deleteFile(textOf(path)); });
}

HRESULT CFileSystemService::CreateFolder(BSTR path) {
    return serviceFrame(L"CFileSystemService::CreateFolder", [&] { FileSystem::createFolder(textOf(path)); });
}

HRESULT CFileSystemService::DeleteFolder(BSTR path, VARIANT_BOOL withContents) {
    return serviceFrame(L"CFileSystemService::DeleteFolder",
                        [&] { FileSystem::deleteFolder(textOf(path), withContents != VARIANT_FALSE); });
}

HRESULT CFileSystemService::List(BSTR path, BSTR mask, BSTR* json) {
    return serviceFrame(L"CFileSystemService::List",
                        [&] { give(json, jsonOf(FileSystem::list(textOf(path), textOf(mask)))); });
}
