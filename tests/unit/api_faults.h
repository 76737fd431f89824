// Keys and certificates of the tests. And work of which every call of the system fails once in turn, while
// what the calls gave is counted until it is given back.
#pragma once

#include "crypto/certificate/certificate.h"
#include "crypto/provider/provider_record.h"
#include "platform/import_patch.h"
#include "support.h"

#include <windows.h>

#include <wincrypt.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace Corvane::Test {

inline void must(bool done) {
    if (!done)
        throw std::runtime_error("system error " + std::to_string(::GetLastError()));
}

inline Certificate pkiCertificate(const std::string& name) {
    const Bytes der = readTestData("pki/" + name + ".der");
    return Certificate(CertificateContext(
        ::CertCreateCertificateContext(X509_ASN_ENCODING, der.data(), static_cast<DWORD>(der.size()))));
}

inline ProviderRecord gostRecord() {
    return providerRecords().front();
}
inline ProviderRecord rsaRecord() {
    return providerRecords().back();
}

class KeyContainer {
public:
    // Its name, which is free; nothing is there any more when this ends.
    KeyContainer(ProviderRecord provider, const std::wstring& what)
        : name(L"corvane " + std::to_wstring(::GetCurrentProcessId()) + L" " + what),
          provider_(std::move(provider)) {}
    KeyContainer(const KeyContainer&) = delete;
    KeyContainer& operator=(const KeyContainer&) = delete;
    ~KeyContainer() { remove(); }

    bool exists() const { return open(CryptProvider().put(), 0); }
    void remove() const {
        HCRYPTPROV none = 0;
        open(&none, CRYPT_DELETEKEYSET);
    }
    void makeKey(DWORD keySpec = AT_KEYEXCHANGE, DWORD flags = CRYPT_EXPORTABLE) {
        spec_ = keySpec;
        CryptProvider provider;
        CryptKey key;
        must(open(provider.put(), CRYPT_NEWKEYSET) &&
             ::CryptGenKey(provider.get(), keySpec, flags, key.put()));
    }

    // Refers to this object.
    CRYPT_KEY_PROV_INFO place() const {
        auto* const provider = const_cast<wchar_t*>(provider_.name.c_str());
        return {const_cast<wchar_t*>(name.c_str()), provider, provider_.type, 0, 0, nullptr, spec_};
    }
    // For the key, in the name of CN=`letter`.
    CertificateContext selfSigned(char letter, CERT_EXTENSIONS* extensions = nullptr) const {
        Bytes subject = hexToBin("300C310A300806035504030C0100");
        subject.back() = static_cast<std::uint8_t>(letter);
        CERT_NAME_BLOB blob{static_cast<DWORD>(subject.size()), subject.data()};
        CRYPT_KEY_PROV_INFO where = place();
        CertificateContext made(
            ::CertCreateSelfSignCertificate(0, &blob, 0, &where, nullptr, nullptr, nullptr, extensions));
        must(static_cast<bool>(made));
        return made;
    }

    const std::wstring name;

private:
    BOOL open(HCRYPTPROV* provider, DWORD flags) const {
        return ::CryptAcquireContextW(provider, name.c_str(), provider_.name.c_str(), provider_.type,
                                      flags | CRYPT_SILENT);
    }

    ProviderRecord provider_;
    DWORD spec_ = AT_KEYEXCHANGE;
};

// With which the call fails.
inline constexpr DWORD denied = ERROR_ACCESS_DENIED;

// What is asked of the system: the calls, the one that is to fail (from 1; 0: none), and what is open.
struct Trace {
    int calls = 0;
    int failing = 0;
    std::string failed;
    int open = 0;
    int openBefore = 0;  // the call that is accounted
};
inline Trace trace;

template <std::size_t size>
struct Name {
    // NOLINTNEXTLINE(google-explicit-constructor): so that a literal can stand for it
    consteval Name(const char (&literal)[size]) { std::copy_n(literal, size, text); }
    char text[size]{};
};

// A call that is counted, fails when its turn has come (but closing does not), and tells what it opened.
template <Name name, bool canFail, class Result, class... Arguments>
struct Counted {
    static inline Result(WINAPI* original)(Arguments...) = nullptr;
    static inline void (*account)(Result, Arguments...) = nullptr;

    static Result WINAPI call(Arguments... arguments) {
        const int before = trace.open;
        const bool fails = canFail && ++trace.calls == trace.failing;
        Result result = std::is_same_v<Result, LONG> ? Result(-1) : Result(0);
        if (fails) {
            trace.failed = name.text;
            ::SetLastError(denied);
        } else {
            result = original(arguments...);
        }
        trace.openBefore = before;
        account(result, arguments...);
        return result;
    }
};

using Patches = std::vector<std::shared_ptr<void>>;

template <Name name, bool canFail = true, class Result, class... Arguments>
void count(
    Patches& patches, Result(WINAPI* function)(Arguments...),
    std::type_identity_t<void (*)(Result, Arguments...)> account = [](Result, Arguments...) {}) {
    using Call = Counted<name, canFail, Result, Arguments...>;
    Call::original = ImportPatch::behind(function);
    Call::account = account;
    patches.push_back(std::make_shared<ImportPatch>(name.text, &Call::call));
}

constexpr auto opens = [](auto result, auto...) { trace.open += result ? 1 : 0; };
// By what the last argument points to, if anything.
constexpr auto fills = [](BOOL done, auto... rest) {
    const auto last = std::get<sizeof...(rest) - 1>(std::tuple(rest...));
    trace.open += done && last && *last ? 1 : 0;
};
constexpr auto closes = [](auto, auto handle, auto...) { trace.open -= handle ? 1 : 0; };
// One behind another, which is the last argument.
constexpr auto follows = [](auto found, auto... rest) {
    trace.open += (found ? 1 : 0) - (std::get<sizeof...(rest) - 1>(std::tuple(rest...)) ? 1 : 0);
};

// As long as they live, this program's calls are counted.
inline Patches countCalls() {
    Patches all;
    count<"CertOpenStore">(all, &::CertOpenStore, opens);
    count<"CertCloseStore", false>(all, &::CertCloseStore, closes);
    count<"CertAddCertificateContextToStore">(all, &::CertAddCertificateContextToStore, fills);
    count<"CertCreateCertificateContext">(all, &::CertCreateCertificateContext, opens);
    // Which frees the context as well.
    count<"CertDeleteCertificateFromStore">(all, &::CertDeleteCertificateFromStore, closes);
    count<"CertDuplicateCertificateContext", false>(all, &::CertDuplicateCertificateContext, opens);
    count<"CertFreeCertificateContext", false>(all, &::CertFreeCertificateContext, closes);
    count<"CertGetSubjectCertificateFromStore">(all, &::CertGetSubjectCertificateFromStore, opens);
    count<"CertEnumCertificatesInStore">(all, &::CertEnumCertificatesInStore, follows);
    count<"CertFindCertificateInStore">(all, &::CertFindCertificateInStore, follows);
    count<"CertGetNameStringW">(all, &::CertGetNameStringW);
    count<"CertNameToStrW">(all, &::CertNameToStrW);
    count<"CryptStringToBinaryA">(all, &::CryptStringToBinaryA);
    count<"CertGetCertificateContextProperty">(all, &::CertGetCertificateContextProperty);
    count<"CertSetCertificateContextProperty">(all, &::CertSetCertificateContextProperty);
    count<"CertGetCertificateChain">(all, &::CertGetCertificateChain, fills);
    all.push_back(std::make_shared<Replaced<void, PCCERT_CHAIN_CONTEXT>>(
        &::CertFreeCertificateChain,
        [original = ImportPatch::behind(&::CertFreeCertificateChain)](auto chain) {
            --trace.open;
            original(chain);
        }));
    count<"CryptAcquireCertificatePrivateKey">(all, &::CryptAcquireCertificatePrivateKey, fills);
    // A call that takes a container away gives no handle.
    count<"CryptAcquireContextW">(all, &::CryptAcquireContextW, [](BOOL done, auto handle, auto...) {
        trace.open += done && *handle ? 1 : 0;
    });
    count<"CryptReleaseContext", false>(all, &::CryptReleaseContext, closes);
    count<"CryptGetProvParam">(all, &::CryptGetProvParam);
    count<"CryptGenKey">(all, &::CryptGenKey, fills);
    count<"CryptGetUserKey">(all, &::CryptGetUserKey, fills);
    count<"CryptImportKey">(all, &::CryptImportKey, fills);
    count<"CryptImportPublicKeyInfo">(all, &::CryptImportPublicKeyInfo, fills);
    count<"CryptDestroyKey", false>(all, &::CryptDestroyKey, closes);
    count<"CryptGetKeyParam">(all, &::CryptGetKeyParam);
    count<"CryptExportKey">(all, &::CryptExportKey);
    count<"CryptExportPublicKeyInfo">(all, &::CryptExportPublicKeyInfo);
    count<"CryptCreateHash">(all, &::CryptCreateHash, fills);
    count<"CryptHashData">(all, &::CryptHashData);
    count<"CryptSignHashW">(all, &::CryptSignHashW);
    count<"CryptVerifySignatureW">(all, &::CryptVerifySignatureW);
    count<"CryptDestroyHash", false>(all, &::CryptDestroyHash, closes);
    count<"CryptQueryObject">(all, &::CryptQueryObject, fills);
    count<"CryptDecodeObject">(all, &::CryptDecodeObject);
    count<"CryptSignAndEncodeCertificate">(all, &::CryptSignAndEncodeCertificate);
    count<"CryptFindOIDInfo">(all, &::CryptFindOIDInfo);
    count<"CryptEnumProvidersW">(all, &::CryptEnumProvidersW);
    count<"CryptEncryptMessage">(all, &::CryptEncryptMessage);
    count<"CryptSignMessage">(all, &::CryptSignMessage);
    count<"CryptGetMessageSignerCount">(all, &::CryptGetMessageSignerCount);
    count<"CryptMsgOpenToEncode">(all, &::CryptMsgOpenToEncode, opens);
    count<"CryptMsgOpenToDecode">(all, &::CryptMsgOpenToDecode, opens);
    count<"CryptMsgUpdate">(all, &::CryptMsgUpdate);
    count<"CryptMsgControl">(all, &::CryptMsgControl);
    count<"CryptMsgGetParam">(all, &::CryptMsgGetParam);
    count<"CryptMsgClose", false>(all, &::CryptMsgClose, closes);
    // What the system asked of the component meanwhile is the system's.
    constexpr auto verified = [](BOOL good, auto... rest) {
        trace.open = trace.openBefore;
        fills(good, rest...);
    };
    count<"CryptVerifyMessageSignature">(all, &::CryptVerifyMessageSignature, verified);
    count<"CryptVerifyDetachedMessageSignature">(all, &::CryptVerifyDetachedMessageSignature, verified);
    return all;
}

// What is done while its calls fail.
struct Work {
    std::string name;                       // the first word is its kind in tests/data/pki/failing_calls.txt
    std::function<std::string()> run;       // tells the answer
    std::function<void()> prepare = [] {};  // before each time; its calls do not fail
};

// Of what tells none.
constexpr auto quiet = [](auto work) { return [=] { return work(), std::string(); }; };

// Whether that may come of it when the call fails: what is told of its kind stands behind what is told of
// any.
inline bool mayCome(const std::string& outcome, const std::string& work, const std::string& call) {
    std::string outcomes;
    for (const auto& row : readTable("pki/failing_calls.txt", 3)) {
        if (row[1] == call && (row[0] == work.substr(0, work.find(' ')) || row[0] == "any"))
            outcomes = ' ' + row[2] + ' ';
    }
    return outcomes.find(' ' + outcome + ' ') != std::string::npos;
}

// Each call fails once and comes to what the table says, and nothing is left open. `look` comes after each
// time, with whether there is an answer.
inline void failEachCall(
    const std::vector<Work>& works, const std::function<void(const Work&, bool)>& look = [](auto&, bool) {}) {
    const Patches patches = countCalls();
    for (const Work& work : works) {
        std::string good;
        for (int failing = 0, calls = 0; failing <= calls; ++failing) {
            work.prepare();
            trace = {};
            trace.failing = failing;
            std::string answer;
            const auto [code, error] = failureOf([&] { answer = work.run(); });
            const Trace done = std::exchange(trace, {});
            SCOPED_TRACE(work.name + ", call " + std::to_string(failing) + ": " + done.failed);
            EXPECT_EQ(done.open, 0);
            look(work, code == 0);
            if (failing == 0) {
                EXPECT_EQ(code, 0u);
                good = answer;
                calls = done.calls;
                continue;
            }
            const std::string outcome =
                code == 0 ? answer == good ? "same" : "other"
                          : std::to_string(code) + (error == denied ? "" : ':' + std::to_string(error));
            EXPECT_TRUE(mayCome(outcome, work.name, done.failed)) << outcome;
        }
    }
}

}  // namespace Corvane::Test
