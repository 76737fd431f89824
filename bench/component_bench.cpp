// Speed of the component on Windows: its codecs beside the system's conversions, and what a call costs beside
// a Scripting.Dictionary and an asynchronous one beside its bare steps. The component must be registered.
#include "bench/async_bench.h"
#include "bench/measure.h"
#include "binary/base64.h"
#include "binary/hex.h"
#include "com/automation.h"
#include "com/ptr.h"

#include <windows.h>

#include <oleauto.h>
#include <wincrypt.h>

#include <cstdlib>

namespace {

using bench::compare;
using bench::keep;
using Corvane::Com::ComPtr;

// Whole lines of 57 bytes, in all a little less than a mebibyte.
constexpr std::size_t dataSize = std::size_t{57} * 16384;

// A peer that refuses its work would look fast.
void must(bool succeeded, const char* what) {
    if (!succeeded) {
        std::fprintf(stderr, "%s failed\n", what);
        std::exit(1);
    }
}

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

class LateBound {
public:
    explicit LateBound(const wchar_t* progId) {
        must(SUCCEEDED(::CLSIDFromProgID(progId, &clsid_)), "CLSIDFromProgID");
        object_ = create();
    }

    ComPtr<IDispatch> create() const {
        ComPtr<IDispatch> object;
        must(SUCCEEDED(
                 ::CoCreateInstance(clsid_, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.putVoid())),
             "CoCreateInstance");
        return object;
    }

    DISPID idOf(const wchar_t* name) const {
        std::wstring copy(name);
        LPOLESTR names[] = {copy.data()};
        DISPID id = DISPID_UNKNOWN;
        must(SUCCEEDED(object_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id)),
             "GetIDsOfNames");
        return id;
    }

    void read(DISPID id) const {
        DISPPARAMS none{};
        VARIANT value;
        ::VariantInit(&value);
        must(SUCCEEDED(object_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none, &value,
                                       nullptr, nullptr)),
             "Invoke");
        keep(&value);
    }

private:
    CLSID clsid_{};
    ComPtr<IDispatch> object_;
};

void compareCalls() {
    const LateBound ours(L"VetrelCorvane2.BinaryObject");
    const LateBound peer(L"Scripting.Dictionary");
    const auto times = [](std::size_t count, const auto& call) {
        return [count, &call] {
            for (std::size_t i = 0; i < count; ++i)
                call();
        };
    };
    const auto oursId = [&] { ours.idOf(L"Size"); };
    const auto peerId = [&] { peer.idOf(L"Count"); };
    bench::compareCalls("GetIDsOfNames, Size", "Dictionary, Count", 2, 1000, times(1000, oursId),
                        times(1000, peerId));
    const auto oursRead = [&, id = ours.idOf(L"Size")] { ours.read(id); };
    const auto peerRead = [&, id = peer.idOf(L"Count")] { peer.read(id); };
    bench::compareCalls("Invoke, Size", "Dictionary, Count", 1, 1000, times(1000, oursRead),
                        times(1000, peerRead));
    const auto oursNew = [&] { ours.create(); };
    const auto peerNew = [&] { peer.create(); };
    bench::compareCalls("CoCreateInstance", "Dictionary", 1 / 1.15, 20, times(20, oursNew),
                        times(20, peerNew));
}

}  // namespace

int main() {
    must(SUCCEEDED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)), "CoInitializeEx");
    compareCodecs();
    compareCalls();
    bench::compareAsync();
    ::CoUninitialize();
}
