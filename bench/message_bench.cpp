// Operations on messages beside the bare calls of the system's functions: how long they take, and the memory
// that those on streams hold. The library that the first argument names (tests/platform) is loaded before, so
// that both use its message functions. The component must be registered, and the keys of
// tests/platform/prepare be there.
#include "bench/hollow_stream.h"
#include "bench/measure.h"
#include "bench/trusted_service.h"
#include "com/runtime/automation.h"
#include "crypto/api/encoding.h"
#include "crypto/certificate/certificate_filter.h"
#include "crypto/certificate/certificate_search.h"
#include "crypto/certificate/certificate_store.h"
#include "crypto/message/inspect.h"
#include "crypto/message/provider_choice.h"
#include "stream/memory_stream.h"

#include <windows.h>

#include <wincrypt.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace {

using bench::Hollow;
using bench::keep;
using bench::must;
using bench::Watch;
using Corvane::Bytes;
using Corvane::messageEncoding;
using Corvane::SharedCertificate;
using Corvane::Com::Bstr;
using Corvane::Com::ComPtr;
using Corvane::Stream::IBinaryStream;
using Corvane::Stream::MemoryStream;

constexpr std::uint64_t size = std::uint64_t{256} << 20;
constexpr double wantedMiB = 8;
constexpr std::size_t blockSize = 0x100000 - 1;  // that of the component
constexpr int turns = 4;
char sha256[] = szOID_NIST_sha256;

SharedCertificate leaf(const wchar_t* name) {
    return Corvane::Crypto::findCertificate(
        LR"({"storeName": "My", "storeLocation": "user", "name": "Leaf )" + std::wstring(name) + L"\"}");
}

// The key of a certificate, for the bare calls.
struct Key {
    explicit Key(const Corvane::Certificate& certificate) {
        must(::CryptAcquireCertificatePrivateKey(certificate.context(), 0, nullptr, &provider, &spec,
                                                 &isOwned),
             "CryptAcquireCertificatePrivateKey");
    }
    ~Key() {
        if (isOwned)
            ::CryptReleaseContext(provider, 0);
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    HCRYPTPROV_OR_NCRYPT_KEY_HANDLE provider = 0;
    DWORD spec = 0;
    BOOL isOwned = FALSE;
};

BOOL WINAPI ignore(const void*, BYTE* data, DWORD, BOOL) {
    keep(data);
    return TRUE;
}

template <class Use>
void forEachBlock(IBinaryStream& input, Use use) {
    Bytes block(blockSize);
    for (bool isLast = false; !isLast;) {
        const std::size_t count = input.read(std::span(block));
        isLast = count < blockSize;
        use(block.data(), static_cast<DWORD>(count), isLast);
    }
}

void hashBare(IBinaryStream& input) {
    Corvane::CryptProvider provider;
    Corvane::CryptHash digest;
    must(::CryptAcquireContextW(provider.put(), nullptr, nullptr, PROV_RSA_AES, CRYPT_VERIFYCONTEXT) &&
             ::CryptCreateHash(provider.get(), CALG_SHA_256, 0, 0, digest.put()),
         "CryptCreateHash");
    forEachBlock(input, [&](const BYTE* data, DWORD count, bool) {
        must(::CryptHashData(digest.get(), data, count, 0), "CryptHashData");
    });
}

void encode(IBinaryStream& input, DWORD type, const void* info) {
    CMSG_STREAM_INFO stream{static_cast<DWORD>(size), ignore, nullptr};
    const Corvane::CryptMessageHandle message(
        ::CryptMsgOpenToEncode(messageEncoding, 0, type, info, nullptr, &stream));
    must(message.get() != nullptr, "CryptMsgOpenToEncode");
    forEachBlock(input, [&](const BYTE* data, DWORD count, bool isLast) {
        must(::CryptMsgUpdate(message.get(), data, count, isLast), "CryptMsgUpdate");
    });
}

void signAttachedBare(IBinaryStream& input, const Corvane::Certificate& certificate) {
    const Key key(certificate);
    CMSG_SIGNER_ENCODE_INFO signer{};
    signer.cbSize = sizeof(signer);
    signer.pCertInfo = certificate.context()->pCertInfo;
    signer.hCryptProv = key.provider;
    signer.dwKeySpec = key.spec;
    signer.HashAlgorithm.pszObjId = sha256;
    CRYPT_DATA_BLOB carried{certificate.context()->cbCertEncoded, certificate.context()->pbCertEncoded};
    CMSG_SIGNED_ENCODE_INFO info{};
    info.cbSize = sizeof(info);
    info.cSigners = 1;
    info.rgSigners = &signer;
    info.cCertEncoded = 1;
    info.rgCertEncoded = &carried;
    encode(input, CMSG_SIGNED, &info);
}

void encryptBare(IBinaryStream& input, const Corvane::Certificate& recipient) {
    Corvane::CryptProvider provider;
    must(::CryptAcquireContextW(provider.put(), nullptr, nullptr, PROV_RSA_AES, CRYPT_VERIFYCONTEXT),
         "CryptAcquireContextW");
    char aes256[] = szOID_NIST_AES256_CBC;
    PCERT_INFO recipients[] = {recipient.context()->pCertInfo};
    CMSG_ENVELOPED_ENCODE_INFO info{};
    info.cbSize = sizeof(info);
    info.hCryptProv = provider.get();
    info.ContentEncryptionAlgorithm.pszObjId = aes256;
    info.cRecipients = 1;
    info.rgpRecipients = recipients;
    encode(input, CMSG_ENVELOPED, &info);
}

void decryptBare(IBinaryStream& input, const Corvane::Certificate& recipient) {
    const Key key(recipient);
    CMSG_STREAM_INFO stream{CMSG_INDEFINITE_LENGTH, ignore, nullptr};
    const Corvane::CryptMessageHandle message(
        ::CryptMsgOpenToDecode(messageEncoding, 0, 0, 0, nullptr, &stream));
    must(message.get() != nullptr, "CryptMsgOpenToDecode");
    bool isOpen = false;
    forEachBlock(input, [&](const BYTE* data, DWORD count, bool isLast) {
        must(::CryptMsgUpdate(message.get(), data, count, isLast), "CryptMsgUpdate");
        if (std::exchange(isOpen, true))
            return;
        const HCRYPTMSG open = message.get();
        DWORD bytes = 0;
        must(::CryptMsgGetParam(open, CMSG_CMS_RECIPIENT_INFO_PARAM, 0, nullptr, &bytes), "CryptMsgGetParam");
        std::vector<std::max_align_t> found(bytes / sizeof(std::max_align_t) + 1);
        must(::CryptMsgGetParam(open, CMSG_CMS_RECIPIENT_INFO_PARAM, 0, found.data(), &bytes),
             "CryptMsgGetParam");
        CMSG_CTRL_KEY_TRANS_DECRYPT_PARA how{};
        how.cbSize = sizeof(how);
        how.hCryptProv = key.provider;
        how.dwKeySpec = key.spec;
        how.pKeyTrans = reinterpret_cast<const CMSG_CMS_RECIPIENT_INFO*>(found.data())->pKeyTrans;
        must(::CryptMsgControl(open, 0, CMSG_CTRL_KEY_TRANS_DECRYPT, &how), "CMSG_CTRL_KEY_TRANS_DECRYPT");
    });
}

// ours(input, output) beside peer(input), each with a new `open`(watch) for its input: the time, the best of
// turns that alternate, and the memory, of a turn of its own.
template <class Open, class Ours, class Peer>
void compareStreams(const char* work, const char* peerName, double wanted, Open open, Ours ours, Peer peer) {
    const auto run = [&](Watch* watch) {
        Hollow output(watch, 0);
        return bench::secondsOf([&] { ours(*open(watch), output); }, 1) * 1e6;
    };
    double best = 1e12;
    double peerBest = 1e12;
    for (int turn = 0; turn < turns; ++turn) {
        best = std::min(best, run(nullptr));
        peerBest = std::min(peerBest, bench::secondsOf([&] { peer(*open(nullptr)); }, 1) * 1e6);
    }
    bench::printTimes(work, best, peerName, peerBest, wanted);
    Watch watch;
    run(&watch);
    watch.print(work, "256 MiB", wantedMiB);
}

void compareStreams() {
    const SharedCertificate certificate = leaf(L"rsa-1");
    const Corvane::Crypto::SharedProvider provider = Corvane::Crypto::getCryptoProvider(*certificate);
    const auto hollow = [](Watch* watch) { return std::make_shared<Hollow>(watch, size); };
    const auto signing = [&](bool attached) {
        return [&, attached](IBinaryStream& input, IBinaryStream& output) {
            provider->sign(input, output, *certificate, attached, false, nullptr);
        };
    };
    compareStreams("detached signature, stream", "hashing in such blocks", 1.1, hollow, signing(false),
                   hashBare);
    compareStreams("attached signature, stream", "CryptMsgUpdate", 1.15, hollow, signing(true),
                   [&](IBinaryStream& input) { signAttachedBare(input, *certificate); });
    const auto encrypting = [&](IBinaryStream& input, IBinaryStream& output) {
        provider->encrypt(input, output, {certificate}, nullptr);
    };
    compareStreams("encryption, stream", "CryptMsgUpdate", 1.15, hollow, encrypting,
                   [&](IBinaryStream& input) { encryptBare(input, *certificate); });
    auto message = std::make_shared<MemoryStream>();
    encrypting(*hollow(nullptr), *message);
    compareStreams(
        "decryption, stream", "CryptMsgUpdate", 1.15,
        [&](Watch*) {
            message->seek(0, Corvane::Stream::Origin::beginning);
            return message;
        },
        [&](IBinaryStream& input, IBinaryStream& output) { provider->decrypt(input, output, nullptr); },
        [&](IBinaryStream& input) { decryptBare(input, *certificate); });
}

Bytes signBare(const Bytes& data, const Corvane::Certificate& certificate) {
    PCCERT_CONTEXT carried[] = {certificate.context()};
    CRYPT_SIGN_MESSAGE_PARA how{};
    how.cbSize = sizeof(how);
    how.dwMsgEncodingType = messageEncoding;
    how.pSigningCert = certificate.context();
    how.HashAlgorithm.pszObjId = sha256;
    how.cMsgCert = 1;
    how.rgpMsgCert = carried;
    const BYTE* blocks[] = {data.data()};
    DWORD sizes[] = {static_cast<DWORD>(data.size())};
    DWORD length = 0;
    must(::CryptSignMessage(&how, TRUE, 1, blocks, sizes, nullptr, &length), "CryptSignMessage");
    Bytes message(length);
    must(::CryptSignMessage(&how, TRUE, 1, blocks, sizes, message.data(), &length), "CryptSignMessage");
    return message;
}

// Every signer of a detached message, as whoever verifies has to ask.
void verifyBare(const Bytes& message, const Bytes& data, const std::function<void(PCCERT_CONTEXT)>& use) {
    CRYPT_VERIFY_MESSAGE_PARA how{};
    how.cbSize = sizeof(how);
    how.dwMsgAndCertEncodingType = messageEncoding;
    const auto length = static_cast<DWORD>(message.size());
    const LONG count = ::CryptGetMessageSignerCount(messageEncoding, message.data(), length);
    must(count > 0, "CryptGetMessageSignerCount");
    const BYTE* blocks[] = {data.data()};
    DWORD sizes[] = {static_cast<DWORD>(data.size())};
    for (LONG index = 0; index < count; ++index) {
        Corvane::CertificateContext signer;
        must(::CryptVerifyDetachedMessageSignature(&how, static_cast<DWORD>(index), message.data(), length, 1,
                                                   blocks, sizes, signer.put()),
             "CryptVerifyDetachedMessageSignature");
        use(signer.get());
    }
}

void chainBare(PCCERT_CONTEXT certificate, HCERTSTORE additional) {
    CERT_CHAIN_PARA parameters{};
    parameters.cbSize = sizeof(parameters);
    Corvane::CertificateChain chain;
    must(::CertGetCertificateChain(nullptr, certificate, nullptr, additional, &parameters, 0, nullptr,
                                   chain.put()),
         "CertGetCertificateChain");
}

// Calls as a script has them made.
class Objects {
public:
    Objects() {
        must(SUCCEEDED(::CoCreateInstance(__uuidof(CryptoService), nullptr, CLSCTX_INPROC_SERVER,
                                          __uuidof(ICryptoService), crypto.putVoid())),
             "CoCreateInstance");
        bench::giveSite(*crypto);
        const Bstr filter(LR"({"storeName": "My", "storeLocation": "user", "name": "Leaf rsa-1"})");
        must(SUCCEEDED(crypto->FindCertificate(filter.get(), certificate.put())), "FindCertificate");
    }

    ComPtr<IBinaryObject> binary(const Bytes& bytes) const {
        std::wstring digits;
        for (const std::uint8_t byte : bytes) {
            for (const int digit : {byte >> 4, byte & 15})
                digits += L"0123456789ABCDEF"[digit];
        }
        ComPtr<IBinaryObject> object;
        must(SUCCEEDED(service_->BinaryObjectFromHex(Bstr(digits).get(), object.put())),
             "BinaryObjectFromHex");
        return object;
    }

    ComPtr<ICryptoService> crypto;
    ComPtr<ICertificate> certificate;

private:
    bench::Trust trust_;
    ComPtr<IBinaryObjectService> service_ = bench::trustedService();
};

void compareRatio(const char* work, const char* peerName, double wanted, const bench::Work& ours,
                  const bench::Work& peer) {
    const bench::Rates rates = bench::measure(1, ours, peer);
    bench::printTimes(work, 1 / rates.ours, peerName, 1 / rates.peer, wanted);
}

void compareShort() {
    const Objects objects;
    ::Sleep(2500);  // a list of sites that changed less than two seconds ago is read at each call
    const Bytes data = bench::randomBytes(1024);
    const auto binary = objects.binary(data);
    const SharedCertificate certificate = leaf(L"rsa-1");
    compareRatio(
        "Sign, 1 KiB", "CryptSignMessage", 1.05,
        [&] {
            ComPtr<IBinaryObject> signature;
            must(SUCCEEDED(objects.crypto->Sign(binary.get(), objects.certificate.get(), VARIANT_FALSE,
                                                signature.put())),
                 "Sign");
        },
        [&] { keep(signBare(data, *certificate).data()); });
    const Bytes message = signBare(data, *certificate);
    const auto signature = objects.binary(message);
    VARIANT none{};
    V_VT(&none) = VT_ERROR;
    V_ERROR(&none) = DISP_E_PARAMNOTFOUND;
    compareRatio(
        "VerifySignature, 1 KiB", "CryptVerifyDetachedMes...", 1.05,
        [&] {
            ComPtr<ICertificateCollection> signers;
            must(SUCCEEDED(
                     objects.crypto->VerifySignature(binary.get(), signature.get(), none, signers.put())),
                 "VerifySignature");
        },
        [&] { verifyBare(message, data, [](PCCERT_CONTEXT signer) { keep(signer); }); });

    Bytes three = message;
    const auto provider = Corvane::Crypto::getCryptoProvider(*certificate);
    for (const wchar_t* name : {L"rsa-2", L"rsa-1"})
        three = provider->addSignerToSignature(three, &data, *leaf(name), false);
    compareRatio(
        "InspectSignature, 3 signers", "verifying, with chains", 1.3,
        [&] { keep(Corvane::Crypto::inspectSignature(three, &data, {}, 0).data()); },
        [&] {
            // Not the signers' own store: not every system keeps it open for them.
            const Corvane::CertificateStoreHandle carried(::CryptGetMessageCertificates(
                messageEncoding, 0, 0, three.data(), static_cast<DWORD>(three.size())));
            must(carried.get() != nullptr, "CryptGetMessageCertificates");
            verifyBare(three, data, [&](PCCERT_CONTEXT signer) { chainBare(signer, carried.get()); });
        });

    const auto rate = [](const char* work, const bench::Work& call) {
        constexpr double wanted = 20000;
        const double calls = bench::measure(1, call, [] {}).ours * 1e6;
        std::printf("%-30s %9.0f a second, wanted %5.0f  %s\n", work, calls, wanted,
                    calls >= wanted ? "reached" : "MISSED");
    };
    rate("GetExtensions", [&] {
        Bstr json;
        must(SUCCEEDED(objects.certificate->GetExtensions(json.put())), "GetExtensions");
    });
    rate("Description", [&] {
        Bstr json;
        must(SUCCEEDED(objects.certificate->get_Description(json.put())), "Description");
    });
}

// A store of the user with that many certificates, which differ in their serial numbers alone.
class FilledStore {
public:
    FilledStore(const Corvane::Certificate& sample, unsigned count) {
        const Corvane::CertificateStoreHandle store(::CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0,
                                                                    CERT_SYSTEM_STORE_CURRENT_USER,
                                                                    static_cast<const wchar_t*>(name)));
        must(store.get() != nullptr, "CertOpenStore");
        Bytes encoded = sample.getContent();
        const Bytes serial = sample.getSerialNumber();
        const auto at = std::search(encoded.begin(), encoded.end(), serial.begin(), serial.end());
        for (unsigned i = 0; i < count; ++i) {
            std::memcpy(&*at + 1, &i, sizeof(i));  // behind the first byte, which is not to become negative
            must(::CertAddEncodedCertificateToStore(store.get(), messageEncoding, encoded.data(),
                                                    static_cast<DWORD>(encoded.size()), CERT_STORE_ADD_ALWAYS,
                                                    nullptr),
                 "CertAddEncodedCertificateToStore");
        }
    }
    ~FilledStore() {
        ::RegDeleteTreeW(HKEY_CURRENT_USER,
                         (L"Software\\Microsoft\\SystemCertificates\\" + std::wstring(name)).c_str());
    }
    FilledStore(const FilledStore&) = delete;
    FilledStore& operator=(const FilledStore&) = delete;

    static constexpr wchar_t name[] = L"CorvaneBench";
};

void compareSearch() {
    constexpr unsigned count = 2000;
    const FilledStore filled(*leaf(L"rsa-1"), count);
    const auto store = Corvane::CertificateStore::open(Corvane::userStores, FilledStore::name, true, false);
    const auto filter = Corvane::detail::CertCustomFilterFn::parse(
        LR"({"hash": "000102030405060708090A0B0C0D0E0F10111213"})");
    const Corvane::CertificateStoreHandle bare(::CertOpenStore(
        CERT_STORE_PROV_SYSTEM_W, 0, 0, CERT_SYSTEM_STORE_CURRENT_USER | CERT_STORE_READONLY_FLAG,
        static_cast<const wchar_t*>(FilledStore::name)));
    compareRatio(
        "hash among 2,000 certificates", "the store's enumeration", 1.3,
        [&] { must(store->getCertificates(filter, false).empty(), "getCertificates"); },
        [&] {
            unsigned seen = 0;
            for (PCCERT_CONTEXT context = nullptr;
                 (context = ::CertEnumCertificatesInStore(bare.get(), context)) != nullptr; ++seen) {
                BYTE digest[20];
                DWORD length = sizeof(digest);
                must(::CertGetCertificateContextProperty(context, CERT_HASH_PROP_ID, digest, &length),
                     "CertGetCertificateContextProperty");
                keep(digest);
            }
            must(seen == count, "the enumeration");
        });
}

}  // namespace

int main(int count, char** arguments) {
    must(count == 2 && ::LoadLibraryA(arguments[1]) != nullptr, "loading the message functions");
    must(SUCCEEDED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)), "CoInitializeEx");
    compareShort();
    compareSearch();
    compareStreams();
    ::CoUninitialize();
    return 0;
}
