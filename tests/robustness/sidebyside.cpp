// Creates an object for each ProgID of the command line and hands it to a thread of another apartment, which
// needs what the registry or a manifest tells of its interface. The first word is a DLL, whose own manifest
// is then in force, or "-".
//
// Prints a line for each ProgID, with the step that failed. The exit status is the number of failures.
#include "../unit/soon.h"
#include "com/runtime/automation.h"
#include "com/runtime/ptr.h"

#include <VetrelCorvane2_h.h>

#include <atomic>
#include <cstdio>
#include <span>
#include <string_view>
#include <thread>

namespace {

using Corvane::Com::Bstr;
using Corvane::Com::ComPtr;
using Corvane::Test::Apartment;

struct Failure {
    const char* step = nullptr;
    HRESULT hr = S_OK;
};

void check(HRESULT hr, const char* step) {
    if (FAILED(hr))
        throw Failure{step, hr};
}

void checkWin32(bool done, const char* step) {
    check(done ? S_OK : HRESULT_FROM_WIN32(::GetLastError()), step);
}

// The activation context of a DLL; none for "-".
HANDLE contextOf(const wchar_t* library) {
    if (std::wstring_view(library) == L"-")
        return nullptr;
    ACTCTXW wanted{};
    wanted.cbSize = sizeof(wanted);
    wanted.dwFlags = ACTCTX_FLAG_RESOURCE_NAME_VALID;
    wanted.lpSource = library;
    wanted.lpResourceName = MAKEINTRESOURCEW(1);
    const HANDLE context = ::CreateActCtxW(&wanted);
    checkWin32(context != INVALID_HANDLE_VALUE, "CreateActCtx");
    return context;
}

// On this thread, until it ends.
void activate(HANDLE context) {
    ULONG_PTR cookie = 0;
    checkWin32(!context || ::ActivateActCtx(context, &cookie), "ActivateActCtx");
}

IID defaultInterface(IDispatch& object) {
    ComPtr<ITypeInfo> info;
    TYPEATTR* attributes = nullptr;
    check(object.GetTypeInfo(0, LOCALE_NEUTRAL, info.put()), "GetTypeInfo");
    check(info->GetTypeAttr(&attributes), "GetTypeAttr");
    const IID iid = attributes->guid;
    info->ReleaseTypeAttr(attributes);
    return iid;
}

template <class Interface>
ComPtr<Interface> createHere(REFCLSID clsid) {
    ComPtr<Interface> object;
    check(::CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, __uuidof(Interface), object.putVoid()),
          "CoCreateInstance");
    return object;
}

void create(HANDLE context, const wchar_t* name) {
    CLSID clsid;
    check(::CLSIDFromProgID(name, &clsid), "CLSIDFromProgID");
    const auto object = createHere<IDispatch>(clsid);
    const IID iid = defaultInterface(*object);
    ComPtr<IStream> stream;
    check(::CoMarshalInterThreadInterfaceInStream(iid, object.get(), stream.put()), "marshalling");
    // Gets a proxy, not the object, and calls through it; in its own apartment an object has none.
    const auto work = [&] {
        activate(context);
        ComPtr<IUnknown> proxy;
        check(::CoGetInterfaceAndReleaseStream(stream.detach(), iid, proxy.putVoid()), "unmarshalling");
        check(static_cast<void*>(proxy.get()) == object.get() ? E_UNEXPECTED : S_OK, "another apartment");
        if (const auto about = proxy.query<IAbout>()) {
            Bstr version;
            check(about->get_RegVersion(version.put()), "call");
            std::printf("RegVersion %zu\n", version.view().size());
        }
        check(createHere<IUnknown>(clsid).query<IClientSecurity>() ? E_UNEXPECTED : S_OK,
              "no proxy in an apartment of its own");
    };
    Failure failure;
    std::atomic<bool> isDone{false};
    std::thread worker([&] {
        const Apartment apartment(COINIT_MULTITHREADED);
        try {
            work();
        } catch (const Failure& caught) {
            failure = caught;
        }
        isDone = true;
    });
    // Its calls to this apartment's objects are served meanwhile.
    Corvane::Test::soon([&] { return isDone.load(); });
    worker.join();
    check(failure.hr, failure.step);
}

int run(const wchar_t* library, std::span<wchar_t*> names) {
    const Apartment apartment;
    const HANDLE context = contextOf(library);
    activate(context);
    int failures = 0;
    for (const wchar_t* name : names) {
        try {
            create(context, name);
            std::printf("%ls ok\n", name);
        } catch (const Failure& failure) {
            ++failures;
            std::printf("%ls %s 0x%08lx\n", name, failure.step, static_cast<unsigned long>(failure.hr));
        }
    }
    return failures;
}

}  // namespace

int wmain(int count, wchar_t** words) {
    try {
        return count < 3 ? 99 : run(words[1], {words + 2, words + count});
    } catch (const Failure& failure) {
        std::printf("%s 0x%08lx\n", failure.step, static_cast<unsigned long>(failure.hr));
        return 98;
    }
}
