// Every call that a piece of work makes of the system fails once in turn, and what the calls gave is counted
// until it is given back.
#pragma once

#include "platform/import_patch.h"
#include "support.h"

#include <windows.h>

#include <wincrypt.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace Corvane::Test {

// With which the call fails.
inline constexpr DWORD denied = ERROR_ACCESS_DENIED;

enum Kind : std::uint8_t { messages, stores, contexts, chains, providers, hashes, keys, kinds };

// What is asked of the system: the calls, the one that is to fail (from 1; 0: none), and what is open.
struct Trace {
    int calls = 0;
    int failing = 0;
    std::string failed;
    std::array<int, kinds> open{};
    int contextsBefore = 0;                      // the call that is accounted
    DWORD keyFlags = CRYPT_ACQUIRE_SILENT_FLAG;  // with which the last key was acquired
    std::vector<DWORD> places;                   // of the system stores, as they were opened

    bool fails(const char* name) {
        if (++calls != failing)
            return false;
        failed = name;
        return true;
    }
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
        const int before = trace.open[contexts];
        const bool fails = canFail && trace.fails(name.text);
        Result result = std::is_same_v<Result, LONG> ? Result(-1) : Result(0);
        if (fails)
            ::SetLastError(denied);
        else
            result = original(arguments...);
        trace.contextsBefore = before;
        account(result, arguments...);
        return result;
    }
};

using Patches = std::vector<std::unique_ptr<ImportPatch>>;

template <Name name, bool canFail = true, class Result, class... Arguments>
void count(
    Patches& patches, Result(WINAPI* function)(Arguments...),
    std::type_identity_t<void (*)(Result, Arguments...)> account = [](Result, Arguments...) {}) {
    using Call = Counted<name, canFail, Result, Arguments...>;
    Call::original = ImportPatch::behind(function);
    Call::account = account;
    patches.push_back(std::make_unique<ImportPatch>(name.text, &Call::call));
}

template <Kind kind>
constexpr auto opens = [](auto result, auto...) { trace.open[kind] += result ? 1 : 0; };
// By its last argument.
template <Kind kind>
constexpr auto gives = [](BOOL result, auto...) { trace.open[kind] += result ? 1 : 0; };
// By what the last argument points to, if anything.
template <Kind kind>
constexpr auto fills = [](BOOL done, auto... rest) {
    const auto last = std::get<sizeof...(rest) - 1>(std::tuple(rest...));
    trace.open[kind] += done && last && *last ? 1 : 0;
};
template <Kind kind>
constexpr auto closes = [](auto, auto handle, auto...) { trace.open[kind] -= handle ? 1 : 0; };

// Closes, but tells nothing.
struct FreedChain {
    static inline decltype(&::CertFreeCertificateChain) original = nullptr;
    static void WINAPI call(PCCERT_CHAIN_CONTEXT chain) {
        --trace.open[chains];
        original(chain);
    }
};

// As long as they live, this program's calls are counted.
inline Patches countCalls() {
    Patches all;
    count<"CertOpenStore">(all, &::CertOpenStore, opens<stores>);
    count<"CertCloseStore", false>(all, &::CertCloseStore, closes<stores>);
    count<"CertAddCertificateContextToStore">(all, &::CertAddCertificateContextToStore, fills<contexts>);
    count<"CertCreateCertificateContext", false>(all, &::CertCreateCertificateContext, opens<contexts>);
    // Which frees the context as well.
    count<"CertDeleteCertificateFromStore", false>(all, &::CertDeleteCertificateFromStore,
                                                   [](BOOL, PCCERT_CONTEXT) { --trace.open[contexts]; });
    count<"CertDuplicateCertificateContext", false>(all, &::CertDuplicateCertificateContext, opens<contexts>);
    count<"CertFreeCertificateContext", false>(all, &::CertFreeCertificateContext, closes<contexts>);
    count<"CertGetSubjectCertificateFromStore">(all, &::CertGetSubjectCertificateFromStore, opens<contexts>);
    count<"CertEnumCertificatesInStore">(all, &::CertEnumCertificatesInStore,
                                         [](PCCERT_CONTEXT found, HCERTSTORE, PCCERT_CONTEXT previous) {
                                             trace.open[contexts] += (found ? 1 : 0) - (previous ? 1 : 0);
                                         });
    count<"CertFindCertificateInStore">(
        all, &::CertFindCertificateInStore,
        [](PCCERT_CONTEXT found, HCERTSTORE, DWORD, DWORD, DWORD, const void*, PCCERT_CONTEXT previous) {
            trace.open[contexts] += (found ? 1 : 0) - (previous ? 1 : 0);
        });
    count<"CertGetCertificateContextProperty">(all, &::CertGetCertificateContextProperty);
    count<"CertSetCertificateContextProperty">(all, &::CertSetCertificateContextProperty);
    count<"CertGetCertificateChain">(all, &::CertGetCertificateChain, gives<chains>);
    FreedChain::original = ImportPatch::behind(&::CertFreeCertificateChain);
    all.push_back(std::make_unique<ImportPatch>("CertFreeCertificateChain", &FreedChain::call));
    count<"CryptAcquireCertificatePrivateKey">(
        all, &::CryptAcquireCertificatePrivateKey,
        [](BOOL done, auto, DWORD flags, auto, auto, auto, auto owned) {
            trace.keyFlags = flags;
            trace.open[providers] += done && *owned ? 1 : 0;
        });
    // A call that takes a container away gives no handle.
    count<"CryptAcquireContextW">(all, &::CryptAcquireContextW, [](BOOL done, auto handle, auto...) {
        trace.open[providers] += done && *handle ? 1 : 0;
    });
    count<"CryptReleaseContext", false>(all, &::CryptReleaseContext, closes<providers>);
    count<"CryptGetProvParam">(all, &::CryptGetProvParam);
    count<"CryptGenKey">(all, &::CryptGenKey, gives<keys>);
    count<"CryptGetUserKey">(all, &::CryptGetUserKey, gives<keys>);
    count<"CryptImportKey">(all, &::CryptImportKey, gives<keys>);
    count<"CryptImportPublicKeyInfo">(all, &::CryptImportPublicKeyInfo, gives<keys>);
    count<"CryptDestroyKey", false>(all, &::CryptDestroyKey, closes<keys>);
    count<"CryptGetKeyParam">(all, &::CryptGetKeyParam);
    count<"CryptExportKey">(all, &::CryptExportKey);
    count<"CryptExportPublicKeyInfo">(all, &::CryptExportPublicKeyInfo);
    count<"CryptCreateHash">(all, &::CryptCreateHash, gives<hashes>);
    count<"CryptHashData">(all, &::CryptHashData);
    count<"CryptSignHashW">(all, &::CryptSignHashW);
    count<"CryptVerifySignatureW">(all, &::CryptVerifySignatureW);
    count<"CryptDestroyHash", false>(all, &::CryptDestroyHash, closes<hashes>);
    count<"CryptQueryObject">(all, &::CryptQueryObject, fills<contexts>);
    count<"CryptDecodeObject">(all, &::CryptDecodeObject);
    count<"CryptSignAndEncodeCertificate">(all, &::CryptSignAndEncodeCertificate);
    count<"CryptFindOIDInfo">(all, &::CryptFindOIDInfo);
    count<"CryptEnumProvidersW">(all, &::CryptEnumProvidersW);
    count<"CryptEncryptMessage">(all, &::CryptEncryptMessage);
    count<"CryptSignMessage">(all, &::CryptSignMessage);
    count<"CryptGetMessageSignerCount">(all, &::CryptGetMessageSignerCount);
    count<"CryptMsgOpenToEncode">(all, &::CryptMsgOpenToEncode, opens<messages>);
    count<"CryptMsgOpenToDecode">(all, &::CryptMsgOpenToDecode, opens<messages>);
    count<"CryptMsgUpdate">(all, &::CryptMsgUpdate);
    count<"CryptMsgControl">(all, &::CryptMsgControl);
    count<"CryptMsgGetParam">(all, &::CryptMsgGetParam);
    count<"CryptMsgClose", false>(all, &::CryptMsgClose, closes<messages>);
    // What the system asked of the component meanwhile is the system's.
    constexpr auto verified = [](BOOL good, auto... rest) {
        trace.open[contexts] = trace.contextsBefore;
        fills<contexts>(good, rest...);
    };
    count<"CryptVerifyMessageSignature">(all, &::CryptVerifyMessageSignature, verified);
    count<"CryptVerifyDetachedMessageSignature">(all, &::CryptVerifyDetachedMessageSignature, verified);
    return all;
}

// The codes with which `work` ends when its first call fails, its second, and so on; equal ones that follow
// each other once. Ends where it succeeds. Nothing may be left open in between. `prepare` comes before each
// time, and its calls do not fail.
template <class Work, class Prepare>
std::vector<std::uint32_t> codesOfFaults(Work&& work, Prepare&& prepare) {
    std::vector<std::uint32_t> codes;
    for (int failing = 1;; ++failing) {
        trace = {};
        prepare();
        trace = {};
        trace.failing = failing;
        const std::uint32_t code = failureOf(work).first;
        const Trace done = std::exchange(trace, {});
        if (done.open != Trace().open)
            throw std::runtime_error("open after " + done.failed + ": " + testing::PrintToString(done.open));
        if (done.calls < failing)
            return codes;
        if (codes.empty() || codes.back() != code)
            codes.push_back(code);
    }
}

template <class Work>
std::vector<std::uint32_t> codesOfFaults(Work&& work) {
    return codesOfFaults(work, [] {});
}

}  // namespace Corvane::Test
