// Speed of the component on Windows: its codecs beside the system's conversions, and what a call costs beside
// a Scripting.Dictionary and an asynchronous one beside its bare steps. The component must be registered.
#include "bench/async_bench.h"
#include "bench/measure.h"
#include "bench/trusted_service.h"
#include "binary/base64.h"
#include "binary/hex.h"
#include "com/runtime/automation.h"
#include "com/runtime/ptr.h"
#include "core/handles.h"

#include <windows.h>

#include <oleauto.h>
#include <wincrypt.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace {

using bench::compare;
using bench::keep;
using bench::must;
using Corvane::Com::Bstr;
using Corvane::Com::ComPtr;
using Corvane::Com::Variant;

// Whole lines of 57 bytes, in all a little less than a mebibyte.
constexpr std::size_t dataSize = std::size_t{57} * 16384;

// The text of the bytes as the system writes it; empty when it does not know the format.
std::wstring systemText(const Corvane::Bytes& data, DWORD format) {
    DWORD length = 0;
    const auto size = static_cast<DWORD>(data.size());
    if (!::CryptBinaryToStringW(data.data(), size, format, nullptr, &length))
        return {};
    std::wstring text(length, L'\0');
    if (!::CryptBinaryToStringW(data.data(), size, format, text.data(), &length))
        return {};
    text.resize(length);
    return text;
}

// Both write into a buffer that is there already, as the system's function does it.
template <class Encode>
void compareEncoding(const char* work, double wanted, DWORD format, std::size_t length,
                     const Corvane::Bytes& data, Encode encode) {
    std::wstring ours(length, L'\0');
    std::wstring system = systemText(data, format);
    must(!system.empty(), "CryptBinaryToStringW");
    compare(
        work, "CryptBinaryToStringW", wanted, data.size(), [&] { keep(encode(ours.data())); },
        [&] {
            auto room = static_cast<DWORD>(system.size() + 1);
            must(::CryptBinaryToStringW(data.data(), static_cast<DWORD>(data.size()), format, system.data(),
                                        &room),
                 "CryptBinaryToStringW");
            keep(system.data());
        });
}

template <class Decode>
void compareDecoding(const char* work, double wanted, DWORD format, const std::wstring& text, Decode decode) {
    const auto systemDecode = [&](BYTE* out, DWORD* size) {
        return ::CryptStringToBinaryW(text.data(), static_cast<DWORD>(text.size()), format, out, size,
                                      nullptr, nullptr);
    };
    const auto ours = [&] { keep(decode(text).data()); };
    DWORD size = 0;
    if (!systemDecode(nullptr, &size)) {
        bench::compareWithoutPeer(work, "no such function here", text.size(), ours);
        return;
    }
    compare(work, "CryptStringToBinaryW", wanted, text.size(), ours, [&] {
        Corvane::Bytes bytes(size);
        DWORD room = size;
        must(systemDecode(bytes.data(), &room), "CryptStringToBinaryW");
        keep(bytes.data());
    });
}

void compareCodecs() {
    const Corvane::Bytes data = bench::randomBytes(dataSize);
    const std::size_t base64Length = Corvane::getBinToBase64RequiredSize(dataSize, 0);
    compareEncoding("Base64 encoding", 2, CRYPT_STRING_BASE64, base64Length, data,
                    [&](wchar_t* out) { return Corvane::encodeBase64(data, 0, out); });
    compareDecoding("Base64 decoding", 20, CRYPT_STRING_BASE64, Corvane::binToBase64(data, 0),
                    [](std::wstring_view text) { return Corvane::base64ToBin(text); });
    constexpr DWORD hex = CRYPT_STRING_HEXRAW | CRYPT_STRING_NOCRLF;
    compareEncoding("Hex encoding", 1, hex, dataSize * 2, data,
                    [&](wchar_t* out) { return Corvane::encodeHex(data, out); });
    compareDecoding("Hex decoding", 1, hex, Corvane::binToHex(data),
                    [](std::wstring_view text) { return Corvane::hexToBin(text); });
}

CLSID classOf(const wchar_t* progId) {
    CLSID clsid{};
    must(SUCCEEDED(::CLSIDFromProgID(progId, &clsid)), "CLSIDFromProgID");
    return clsid;
}

ComPtr<IDispatch> create(const CLSID& clsid) {
    ComPtr<IDispatch> object;
    must(SUCCEEDED(::CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.putVoid())),
         "CoCreateInstance");
    return object;
}

DISPID idOf(IDispatch& object, const wchar_t* name) {
    std::wstring copy(name);
    LPOLESTR names[] = {copy.data()};
    DISPID id = DISPID_UNKNOWN;
    must(SUCCEEDED(object.GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id)), "GetIDsOfNames");
    return id;
}

// The arguments begin with the last one. What they hold stays the caller's.
Variant invoke(IDispatch& object, DISPID id, WORD flags, std::span<VARIANT> arguments = {}) {
    DISPPARAMS parameters{arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
    Variant result;
    must(SUCCEEDED(object.Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters, result.put(), nullptr,
                                 nullptr)),
         "Invoke");
    keep(&result);
    return result;
}

VARIANT valueOf(IDispatch& object) {
    VARIANT value;
    V_VT(&value) = VT_DISPATCH;
    V_DISPATCH(&value) = &object;
    return value;
}

VARIANT valueOf(const Bstr& text) {
    VARIANT value;
    V_VT(&value) = VT_BSTR;
    V_BSTR(&value) = text.get();
    return value;
}

VARIANT valueOf(long number) {
    VARIANT value;
    V_VT(&value) = VT_I4;
    V_I4(&value) = number;
    return value;
}

std::wstring wide(std::string_view ascii) {
    return {ascii.begin(), ascii.end()};
}

// What a new process does with its first object: the microseconds, for the process that asked.
int useFirstObject(const wchar_t* progId, const wchar_t* property) {
    must(SUCCEEDED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)), "CoInitializeEx");
    const auto start = std::chrono::steady_clock::now();
    const auto object = create(classOf(progId));
    invoke(*object, idOf(*object, property), DISPATCH_PROPERTYGET);
    const auto spent = std::chrono::steady_clock::now() - start;
    return static_cast<int>(std::chrono::duration_cast<std::chrono::microseconds>(spent).count());
}

// The microseconds that a process of this program took for it.
double firstObject(const wchar_t* arguments) {
    wchar_t program[MAX_PATH];
    must(::GetModuleFileNameW(nullptr, program, MAX_PATH) != 0, "GetModuleFileNameW");
    std::wstring line = L'"' + std::wstring(program) + L"\" " + arguments;
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    must(::CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                          &process),
         "CreateProcessW");
    ::WaitForSingleObject(process.hProcess, INFINITE);
    DWORD spent = 0;
    must(::GetExitCodeProcess(process.hProcess, &spent) && spent > 1, "the first object");
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    return spent;
}

// From the ProgID to the end of the first call, the best of processes that alternate.
void compareFirstObjects() {
    constexpr int turns = 15;
    double ours = 1e9;
    double peer = 1e9;
    for (int i = 0; i < turns; ++i) {
        ours = std::min(ours, firstObject(L"VetrelCorvane2.BinaryObject Size"));
        peer = std::min(peer, firstObject(L"Scripting.Dictionary Count"));
    }
    bench::printTimes("first object of a process", ours, "Dictionary, Count", peer, 1.3);
}

template <class Call>
bench::Work times(std::size_t count, Call call) {
    return [count, call = std::move(call)] {
        for (std::size_t i = 0; i < count; ++i)
            call();
    };
}

constexpr std::size_t callsOfATurn = 1000;

void compareCalls() {
    const CLSID oursClass = classOf(L"VetrelCorvane2.BinaryObject");
    const CLSID peerClass = classOf(L"Scripting.Dictionary");
    const auto ours = create(oursClass);
    const auto peer = create(peerClass);
    bench::compareCalls("GetIDsOfNames, Size", "Dictionary, Count", 2, callsOfATurn,
                        times(callsOfATurn, [&] { idOf(*ours, L"Size"); }),
                        times(callsOfATurn, [&] { idOf(*peer, L"Count"); }));
    const auto reading = [](IDispatch& object, const wchar_t* name) {
        return times(callsOfATurn,
                     [&object, id = idOf(object, name)] { invoke(object, id, DISPATCH_PROPERTYGET); });
    };
    bench::compareCalls("Invoke, Size", "Dictionary, Count", 1, callsOfATurn, reading(*ours, L"Size"),
                        reading(*peer, L"Count"));
    bench::compareCalls("CoCreateInstance", "Dictionary", 1 / 1.15, 20, times(20, [&] { create(oursClass); }),
                        times(20, [&] { create(peerClass); }));
}

// The cheapest method of a service, which asks for the page's site first, beside a look into a dictionary;
// and what the check cannot do without, whether the registry's list of sites is still the one that was read.
void compareCheckedCalls() {
    const bench::Trust trust;
    const auto service = bench::trustedService().query<IDispatch>();
    const auto dictionary = create(classOf(L"Scripting.Dictionary"));
    const auto empty = create(classOf(L"VetrelCorvane2.BinaryObject"));
    const Bstr key(L"a");
    const auto ours = times(callsOfATurn, [&, id = idOf(*service, L"GetCrc32")] {
        VARIANT arguments[] = {valueOf(0), valueOf(*empty)};
        invoke(*service, id, DISPATCH_METHOD | DISPATCH_PROPERTYGET, arguments);
    });
    const auto peer = times(callsOfATurn, [&, id = idOf(*dictionary, L"Exists")] {
        VARIANT arguments[] = {valueOf(key)};
        invoke(*dictionary, id, DISPATCH_METHOD | DISPATCH_PROPERTYGET, arguments);
    });
    const Corvane::RegistryKey sites = bench::Trust::openSites();
    const auto question = times(callsOfATurn, [&] {
        FILETIME changed;
        must(::RegQueryInfoKeyW(sites.get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                nullptr, nullptr, nullptr, &changed) == ERROR_SUCCESS,
             "RegQueryInfoKeyW");
    });
    // A list that changed less than two seconds ago is read at each call.
    ::Sleep(2500);
    bench::compareCalls("late-bound call, site checked", "Dictionary, Exists", 0.7, callsOfATurn, ours, peer);
    bench::compareCalls("the same", "the registry's question", 0.7, callsOfATurn, ours, question);
}

// The microseconds that a new archive takes to get so many entries, each by a call of its own.
double fillArchive(IDispatch& service, IDispatch& content, int entries) {
    const auto stream = create(classOf(L"VetrelCorvane2.BinaryStream"));
    VARIANT target[] = {valueOf(*stream)};
    const Variant made = invoke(service, idOf(service, L"OpenZipArchive"), DISPATCH_METHOD, target);
    IDispatch& archive = *V_DISPATCH(&made.get());
    const DISPID add = idOf(archive, L"Add");
    const auto fill = [&] {
        for (int i = 0; i < entries; ++i) {
            const Bstr name(L"folder/entry number " + std::to_wstring(i) + L".txt");
            VARIANT arguments[] = {valueOf(content), valueOf(name)};
            invoke(archive, add, DISPATCH_METHOD, arguments);
        }
    };
    return bench::secondsOf(fill, 1) * 1e6;
}

void compareArchives() {
    const bench::Trust trust;
    const auto bytes = bench::trustedService();
    ComPtr<IBinaryObject> content;
    must(SUCCEEDED(bytes->BinaryObjectFromHex(Bstr(std::wstring(200, L'5')).get(), content.put())),
         "BinaryObjectFromHex");
    const auto service = create(classOf(L"VetrelCorvane2.CompressionService"));
    bench::giveSite(*service);
    constexpr int entries = 1500;
    constexpr int turns = 4;
    double once = 1e9;
    double twice = 1e9;
    for (int i = 0; i < turns; ++i) {
        once = std::min(once, fillArchive(*service, *content, entries));
        twice = std::min(twice, fillArchive(*service, *content, 2 * entries));
    }
    bench::printTimes("zip archive, 3,000 Add", twice, "1,500 Add", once, 2.3);
}

}  // namespace

int main(int count, char** arguments) {
    if (count == 3)
        return useFirstObject(wide(arguments[1]).c_str(), wide(arguments[2]).c_str());
    must(SUCCEEDED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)), "CoInitializeEx");
    compareCodecs();
    compareFirstObjects();
    compareCalls();
    compareCheckedCalls();
    compareArchives();
    bench::compareAsync();
    ::CoUninitialize();
    return 0;
}
