#include "com/objects/files/file_object.h"

#include "com/runtime/dates.h"

using namespace Corvane;
using namespace Corvane::Com;

HRESULT CFileObject::get_Path(BSTR* path) {
    return frame(L"CFileObject::get_Path", [&] { give(path, file_->path()); });
}

HRESULT CFileObject::get_Name(BSTR* name) {
    return frame(L"CFileObject::get_Name", [&] {
        const std::wstring& path = file_->path();
        give(name, path.substr(path.find_last_of(L'\\') + 1));
    });
}

HRESULT CFileObject::get_CreationDate(DATE* date) {
    return frame(L"CFileObject::get_CreationDate", [&] { give(date, toDate(file_->times().creation)); });
}

HRESULT CFileObject::put_CreationDate(DATE date) {
    return frame(L"CFileObject::put_CreationDate", [&] {
        const FILETIME time = fromDate(date);
        file_->setTimes(&time, nullptr, nullptr);
    });
}

HRESULT CFileObject::get_AccessDate(DATE* date) {
    return frame(L"CFileObject::get_AccessDate", [&] { give(date, toDate(file_->times().access)); });
}

HRESULT CFileObject::put_AccessDate(DATE date) {
    return frame(L"CFileObject::put_AccessDate", [&] {
        const FILETIME time = fromDate(date);
        file_->setTimes(nullptr, &time, nullptr);
    });
}

HRESULT CFileObject::get_WriteDate(DATE* date) {
    return frame(L"CFileObject::get_WriteDate", [&] { give(date, toDate(file_->times().write)); });
}

HRESULT CFileObject::put_WriteDate(DATE date) {
    return frame(L"CFileObject::put_WriteDate", [&] {
        const FILETIME time = fromDate(date);
        file_->setTimes(nullptr, nullptr, &time);
    });
}

HRESULT CFileObject::Flush() {
    return frame(L"CFileObject::Flush", [&] { file_->flush(); });
}
