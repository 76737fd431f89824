// Asynchronous calls beside the least that such a call takes: registering the callback, posting a message,
// fetching the callback, calling it, and revoking it. The peer computes nothing and needs no second thread.
#include "bench/async_bench.h"

#include "bench/measure.h"
#include "bench/trusted_service.h"
#include "binary/bytes.h"
#include "binary/crc32.h"
#include "com/async/async.h"
#include "com/runtime/automation.h"
#include "com/runtime/plain_object.h"
#include "com/runtime/ptr.h"
#include "tools/scripthost/unscriptable.h"

#include <windows.h>

#include <objidl.h>

#include <VetrelCorvane2_h.h>

namespace bench {
namespace {

using Corvane::Com::ComPtr;
using Corvane::Com::makeObject;
using Corvane::Com::PlainObject;

constexpr int calls = 10'000;
constexpr UINT posted = WM_USER + 1;

class Callback final : public ScriptHost::Unscriptable<PlainObject<IDispatch>> {
public:
    int called = 0;

    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) override {
        ++called;
        return S_OK;
    }
};

// Delivers messages until the callback has been called as often as it should.
void pump(const Callback& callback) {
    MSG message;
    while (callback.called < calls && ::GetMessageW(&message, nullptr, 0, 0))
        ::DispatchMessageW(&message);
}

class BareLoop {
public:
    BareLoop()
        : window_(::CreateWindowExW(0, L"Static", nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr,
                                    nullptr)) {
        must(window_ != nullptr, "CreateWindowExW");
        must(SUCCEEDED(::CoCreateInstance(CLSID_StdGlobalInterfaceTable, nullptr, CLSCTX_INPROC_SERVER,
                                          IID_IGlobalInterfaceTable, table_.putVoid())),
             "CoCreateInstance");
        ::SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        ::SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&procedure));
    }
    ~BareLoop() { ::DestroyWindow(window_); }
    BareLoop(const BareLoop&) = delete;
    BareLoop& operator=(const BareLoop&) = delete;

    void start(IDispatch* callback) {
        DWORD cookie = 0;
        must(SUCCEEDED(table_->RegisterInterfaceInGlobal(callback, IID_IDispatch, &cookie)) &&
                 ::PostMessageW(window_, posted, cookie, 0),
             "PostMessageW");
    }

private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wide, LPARAM data) {
        if (message != posted)
            return ::DefWindowProcW(window, message, wide, data);
        reinterpret_cast<BareLoop*>(::GetWindowLongPtrW(window, GWLP_USERDATA))
            ->deliver(static_cast<DWORD>(wide));
        return 0;
    }

    void deliver(DWORD cookie) {
        ComPtr<IDispatch> callback;
        must(SUCCEEDED(table_->GetInterfaceFromGlobal(cookie, IID_IDispatch, callback.putVoid())),
             "GetInterfaceFromGlobal");
        DISPPARAMS none{};
        callback->Invoke(DISPID_VALUE, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &none, nullptr,
                         nullptr, nullptr);
        table_->RevokeInterfaceFromGlobal(cookie);
    }

    HWND window_;
    ComPtr<IGlobalInterfaceTable> table_;
};

}  // namespace

void compareAsync() {
    const Trust trust;
    const auto service = trustedService();
    ComPtr<IBinaryObject> data;
    const Corvane::Com::Bstr text(std::wstring(2048, L'0'));
    must(SUCCEEDED(service->BinaryObjectFromHex(text.get(), data.put())), "BinaryObjectFromHex");
    BareLoop loop;
    const auto callback = makeObject<Callback>();
    const auto repeat = [&callback](const auto& start) {
        return [&callback, &start] {
            callback->called = 0;
            for (int i = 0; i < calls; ++i)
                start();
            pump(*callback);
        };
    };
    const auto ours = [&] {
        must(SUCCEEDED(service->GetCrc32Async(data.get(), 0, callback.get())), "GetCrc32Async");
    };
    const auto bytes = std::make_shared<const Corvane::Bytes>(std::size_t{1024});
    const auto bare = [&] {
        Corvane::Com::start(
            callback.get(),
            Corvane::Com::Operation{L"getCrc32", [bytes] { return Corvane::Binary::getCrc32(*bytes, 0); }});
    };
    const auto peer = [&] { loop.start(callback.get()); };
    constexpr const char* peerName = "register, post, fetch, revoke";
    compareCalls("asynchronous CRC-32, 1 KiB", peerName, 0.7, calls, repeat(bare), repeat(peer));
    // A service asks at each call whether the list of trusted sites in the registry changed.
    compareCalls("the same with the site's check", peerName, 0.7, calls, repeat(ours), repeat(peer));
}

}  // namespace bench
