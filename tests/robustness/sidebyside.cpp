// Creates an object for each ProgID of the command line and hands it to a thread of another apartment, which
// needs what the registry or a manifest tells of its interface. The first word is a DLL, whose own manifest
// is then in force, or "-".
//
// Prints a line for each ProgID, with the step that failed. The exit status is the number of failures.
#include "com/runtime/automation.h"
#include "com/runtime/ptr.h"
#include "core/handles.h"

#include <VetrelCorvane2_h.h>
#include <objbase.h>

#include <cstdio>
#include <span>
#include <string_view>
#include <thread>

namespace {

using Corvane::Com::Bstr;
using Corvane::Com::ComPtr;

struct Failure {
    const char* step;
    HRESULT hr;
};

void check(HRESULT hr, const char* step) {
    if (FAILED(hr))
        throw Failure{step, hr};
}

// An activation context, which counts on a thread while it is active there.
class Context {
public:
    explicit Context(const wchar_t* library) {
        if (std::wstring_view(library) == L"-")
            return;
        ACTCTXW wanted{};
        wanted.cbSize = sizeof(wanted);
        wanted.dwFlags = ACTCTX_FLAG_RESOURCE_NAME_VALID;
        wanted.lpSource = library;
        wanted.lpResourceName = MAKEINTRESOURCEW(1);
        handle_ = ::CreateActCtxW(&wanted);
        if (handle_ == INVALID_HANDLE_VALUE)
            throw Failure{"CreateActCtx", HRESULT_FROM_WIN32(::GetLastError())};
    }
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;
    ~Context() {
        if (handle_)
            ::ReleaseActCtx(handle_);
    }

    // Until the thread ends.
    void activate() const {
        ULONG_PTR cookie = 0;
        if (handle_ && !::ActivateActCtx(handle_, &cookie))
            throw Failure{"ActivateActCtx", HRESULT_FROM_WIN32(::GetLastError())};
    }

private:
    HANDLE handle_ = nullptr;
};

IID defaultInterface(IDispatch& object) {
    ComPtr<ITypeInfo> info;
    TYPEATTR* attributes = nullptr;
    check(object.GetTypeInfo(0, LOCALE_NEUTRAL, info.put()), "GetTypeInfo");
    check(info->GetTypeAttr(&attributes), "GetTypeAttr");
    const IID iid = attributes->guid;
    info->ReleaseTypeAttr(attributes);
    return iid;
}

// What the other apartment does: it gets a proxy, not the object, and calls through it.
void useProxy(ComPtr<IStream> stream, REFIID iid, const void* object) {
    ComPtr<IUnknown> proxy;
    check(::CoGetInterfaceAndReleaseStream(stream.detach(), iid, proxy.putVoid()), "unmarshalling");
    check(proxy.get() == object ? E_UNEXPECTED : S_OK, "another apartment");
    if (const auto about = proxy.query<IAbout>()) {
        Bstr version;
        check(about->get_RegVersion(version.put()), "call");
        std::printf("RegVersion %zu\n", version.view().size());
    }
}

// Runs the work on a thread of the multithreaded apartment, serving calls to this one's objects meanwhile.
template <class Work>
void inOtherApartment(const Context& context, const Work& work) {
    Failure failure{nullptr, S_OK};
    const Corvane::EventHandle done(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    std::thread worker([&] {
        ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        try {
            context.activate();
            work();
        } catch (const Failure& caught) {
            failure = caught;
        }
        ::CoUninitialize();
        ::SetEvent(done.get());
    });
    HANDLE handle = done.get();
    DWORD index = 0;
    ::CoWaitForMultipleHandles(0, INFINITE, 1, &handle, &index);
    worker.join();
    check(failure.hr, failure.step);
}

void create(const Context& context, const wchar_t* name) {
    CLSID clsid;
    check(::CLSIDFromProgID(name, &clsid), "CLSIDFromProgID");
    ComPtr<IDispatch> object;
    check(::CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.putVoid()),
          "CoCreateInstance");
    const IID iid = defaultInterface(*object);
    ComPtr<IStream> stream;
    check(::CoMarshalInterThreadInterfaceInStream(iid, object.get(), stream.put()), "marshalling");
    inOtherApartment(context, [&] {
        useProxy(stream, iid, object.get());
        ComPtr<IUnknown> own;
        check(::CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, own.putVoid()),
              "CoCreateInstance");
        check(own.query<IClientSecurity>() ? E_UNEXPECTED : S_OK, "no proxy in an apartment of its own");
    });
}

int run(const wchar_t* library, std::span<wchar_t*> names) {
    ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const Context context(library);
    context.activate();
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
    ::CoUninitialize();
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
