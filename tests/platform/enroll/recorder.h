// Objects in the place of the system's for enrollment, of which Wine has none: they take every call by name,
// note it, and fail where they are told to.
#pragma once

#include <windows.h>

#include <oaidl.h>

#include <functional>
#include <string>
#include <vector>

namespace Corvane::Platform {

struct Recorder {
    // A line for each call of a member: "request.Encode()", "key.KeySpec=1". Texts of more than 60 characters
    // are told by their length.
    std::function<void(const std::wstring& line)> note;
    // What the call is answered with; S_OK lets it succeed.
    std::function<HRESULT(const std::wstring& member)> judge;
    // The text of a request.
    std::function<std::wstring()> answer;
};

// The classes that are stood in for: a name for the notes, the identifier, and that of the interface.
struct RecordedClass {
    const wchar_t* name;
    CLSID clsid;
    IID iid;
};
extern const RecordedClass recordedClasses[4];

// A factory of one of them, with one reference, which the caller owns. `recorder` outlives it and its
// objects.
IClassFactory* makeRecordingFactory(const RecordedClass& recorded, const Recorder& recorder);

}  // namespace Corvane::Platform
