// Requests with new keys, their answers, copies of keys, and renewals. What does not need a failing call is
// in scripts/enroll.js.
#include "../tools/scripthost/unscriptable.h"
#include "api_faults.h"
#include "asn1/pkix/attribute.h"
#include "binary/base64.h"
#include "com/enroll/certificate_request.h"
#include "com/runtime/automation.h"
#include "com/runtime/plain_object.h"
#include "core/json.h"
#include "core/wide_text.h"
#include "crypto/enroll/copy_container.h"
#include "crypto/enroll/create_request.h"
#include "crypto/enroll/install_response.h"
#include "crypto/enroll/key_container.h"
#include "crypto/request/distinguished_name.h"
#include "crypto/request/extensions_json.h"

#include <json/value.h>

using namespace Corvane;
using namespace Corvane::Test;

namespace {

SharedBytes shared(Bytes bytes) {
    return std::make_shared<Bytes>(std::move(bytes));
}

TEST(Request, EachCallFailsOnce) {
    const ProviderRecord gost = gostRecord();
    const KeyContainer container(gost, L"request");
    RequestParameters parameters;
    parameters.containerName = container.name;
    parameters.keySpec = AT_KEYEXCHANGE;
    parameters.distinguishedName = shared(Crypto::encodeDistinguishedName(L"CN=Иванов,C=RU"));
    parameters.extensions = shared(Crypto::encodeExtensionsJson(LR"({"keyUsage": ["digitalSignature"]})"));
    // challengePassword (RFC 2985 5.4.1)
    parameters.enrollmentParameters =
        shared(asn1::encodeAttribute({"1.2.840.113549.1.9.7", {hexToBin("0C0161")}}));
    parameters.silent = true;
    // Wine's own function asks no provider for the key of a registered algorithm; the one with the identifier
    // does.
    const Replaced exporting(
        &::CryptExportPublicKeyInfo, [](auto provider, auto spec, auto encoding, auto info, auto size) {
            char oid[] = "1.2.643.2.2.19";
            return ::CryptExportPublicKeyInfoEx(provider, spec, encoding, oid, 0, nullptr, info, size);
        });
    constexpr char path[] = R"(\\.\Aktiv Rutoken\a)";
    const Replaced naming(&::CryptGetProvParam, [&](auto, auto, BYTE* buffer, DWORD* size, auto) {
        *size = sizeof(path);
        if (buffer)
            std::copy_n(path, sizeof(path), buffer);
        return TRUE;
    });
    int left = 0;
    const auto create = [&] {
        const Json::Value json = parseJson(createCertificationRequestEx(
            gost, parameters, [](const std::wstring& token) { return Json::Value(toUtf8(token)); }));
        EXPECT_EQ(json["token"], path);
        EXPECT_EQ(json["path"], path);
    };
    const auto prepare = [&] {
        left += container.exists();
        container.remove();
    };
    failEachCall({{"request", quiet(create), prepare}});
    EXPECT_GT(left, 1) << "what was made stays behind";
}

// Another program makes a container with a longer name while they are listed.
TEST(Response, ContainersMayComeWhileTheyAreListed) {
    std::vector<std::string_view> told{"a", "longer", "a", "longer", "b", ""};
    const Replaced patch(&::CryptGetProvParam, [&](auto, auto, BYTE* buffer, DWORD* size, DWORD flags) {
        if (!buffer) {
            *size = 2;
            return TRUE;
        }
        const std::string_view name = told.front();
        told.erase(told.begin());
        EXPECT_EQ(flags, name == "a" ? CRYPT_FIRST : 0);
        const bool isTold = !name.empty() && name.size() < std::exchange(*size, name.size() + 1);
        ::SetLastError(name.empty() ? ERROR_NO_MORE_ITEMS : ERROR_MORE_DATA);
        if (isTold)
            *std::ranges::copy(name, buffer).out = 0;
        return BOOL{isTold};
    });
    EXPECT_EQ(detail::containerNames(0), (std::vector<std::wstring>{L"a", L"longer", L"b"}));
}

TEST(Response, EachCallFailsOnce) {
    const ProviderRecord rsa = rsaRecord();
    KeyContainer container(rsa, L"answer");
    const KeyContainer copy(rsa, L"a copy");
    const std::wstring store = L"Corvane " + std::to_wstring(::GetCurrentProcessId());
    // The authority's answer: a certificate for the key of a container, which is not yet told of it.
    container.makeKey();
    const std::wstring text = binToBase64(Corvane::Certificate(container.selfSigned('A')).getContent(), 0);
    const SharedCertificate certificate = installCertificateResponse(rsa, text, store);
    const auto installIn = [&] { installCertificateResponseEx(rsa, text, container.name, store); };
    const auto search = [&] {
        const Bytes place =
            installCertificateResponse(rsa, text, store)->getCertProperty(CERT_KEY_PROV_INFO_PROP_ID);
        return toUtf8(reinterpret_cast<const CRYPT_KEY_PROV_INFO*>(place.data())->pwszContainerName);
    };
    const auto copyKey = [&] { copyKeyContainer(*certificate, copy.name); };
    bool isCopied = false;
    const auto prepare = [&] {
        EXPECT_EQ(copy.exists(), isCopied) << "a copy that failed leaves no container";
        copy.remove();
    };
    failEachCall({{"answer", quiet(installIn)}, {"search", search}, {"copy", quiet(copyKey), prepare}},
                 [&](const Work& work, bool isAnswer) { isCopied = isAnswer && work.name == "copy"; });
    ::CertUnregisterSystemStore(store.c_str(), CERT_SYSTEM_STORE_CURRENT_USER | CERT_STORE_DELETE_FLAG);
}

// One of the system's objects for enrollment, of which Wine has none. A call of a member is noted, and
// answered as the note says.
class Recorded final : public ScriptHost::Unscriptable<Com::PlainObject<IDispatch>> {
public:
    using Note = std::function<HRESULT(const std::wstring&)>;
    Recorded(std::wstring name, const Note& note) : name_(std::move(name)), note_(note) {}

    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID*) override {
        member_ = names[0];
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD kind, DISPPARAMS* parameters, VARIANT* result,
                                     EXCEPINFO* exception, UINT*) override {
        std::wstring text;
        for (UINT i = parameters->cArgs; i-- > 0;)
            text += (text.empty() ? L"" : L", ") + textOf(parameters->rgvarg[i]);
        if (kind & DISPATCH_METHOD)
            text = L"(" + text + L")";
        else if (parameters->cNamedArgs == 1 && parameters->rgdispidNamedArgs[0] == DISPID_PROPERTYPUT)
            text = L"=" + text;
        if (const HRESULT hr = note_(name_ + L"." + member_ + text); FAILED(hr)) {
            exception->scode = hr;
            return DISP_E_EXCEPTION;
        }
        if (kind == DISPATCH_PROPERTYGET && member_ == L"PrivateKey") {
            V_VT(result) = VT_DISPATCH;
            V_DISPATCH(result) = Com::makeObject<Recorded>(L"key", note_).detach();
        } else if (result) {
            V_VT(result) = VT_BSTR;
            V_BSTR(result) = ::SysAllocString(L"Base64");
        }
        return S_OK;
    }

private:
    static std::wstring textOf(const VARIANT& value) {
        if (V_VT(&value) == VT_DISPATCH)
            return static_cast<Recorded*>(V_DISPATCH(&value))->name_;
        Com::Variant text;
        ::VariantChangeType(text.put(), const_cast<VARIANT*>(&value), VARIANT_ALPHABOOL, VT_BSTR);
        const std::wstring plain(Com::viewOf(V_BSTR(&text.get())));
        return V_VT(&value) == VT_BSTR ? L"'" + plain + L"'" : plain;
    }

    std::wstring name_, member_;
    const Note& note_;
};

std::wstring textOf(const GUID& guid) {
    std::wstring text(38, L'\0');
    ::StringFromGUID2(guid, text.data(), 39);
    return text;
}

TEST(Renewal, MakesTheCallsOfTheTableAndTellsWhichFailed) {
    KeyContainer container(rsaRecord(), L"renewal");
    container.makeKey(AT_SIGNATURE, 0);
    Bytes value{0x05, 0x00};
    std::vector<CERT_EXTENSION> extensions;
    for (const char* oid : {"2.5.29.31", "2.5.29.15", "1.3.6.1.5.5.7.1.1", "2.5.29.35", "1.2.3"})
        extensions.push_back({const_cast<char*>(oid), oid == std::string("2.5.29.15"), {2, value.data()}});
    CERT_EXTENSIONS all{static_cast<DWORD>(extensions.size()), extensions.data()};
    const Corvane::Certificate certificate(container.selfSigned('a', &all));
    const std::string content = toUtf8(binToBase64(certificate.getContent(), base64NoLineBreaks));

    std::vector<std::string> notes;
    std::size_t failing = 0;  // the number of a call
    const Recorded::Note note = [&](const std::wstring& line) {
        notes.push_back(toUtf8(line));
        return notes.size() == failing ? NTE_SILENT_CONTEXT : S_OK;
    };
    const auto table = readTable("requests/renewal.txt", 3);
    const Replaced creating(&::CoCreateInstance, [&](REFCLSID clsid, auto, auto, REFIID iid, void** object) {
        const std::string identifiers = toUtf8(textOf(clsid) + L" " + textOf(iid));
        const auto row = std::ranges::find_if(table, [&](auto& each) { return each[2] == identifiers; });
        const std::wstring name = row != table.end() ? wide((*row)[1]) : L"other";
        const HRESULT hr = note(L"new " + name);
        *object = FAILED(hr) ? nullptr : Com::makeObject<Recorded>(name, note).detach();
        return hr;
    });
    const auto bare = pkiCertificate("signer");
    EXPECT_EQ(failureOf([&] { createCertificateRequest(5)->getRenewalRequest(false, bare); }),
              Failure(406, CRYPT_E_NOT_FOUND));
    EXPECT_EQ(errorCode([] { createCertificateRequest(4); }), 400u);

    for (const std::string name : {"pkcs10", "pkcs7", "control10", "control7"}) {
        SCOPED_TRACE(name);
        std::vector<std::string> calls;
        std::vector<std::string> outcomes;
        for (auto row : table) {
            if ((row[0] + ' ').find(name + ' ') == std::string::npos)
                continue;
            for (const auto& [mark, text] :
                 {std::pair("<content>", content), {"<container>", toUtf8(container.name)}})
                if (const std::size_t at = row[1].find(mark); at != std::string::npos)
                    row[1].replace(at, std::strlen(mark), text);
            calls.push_back(row[1]);
            outcomes.push_back(row[2]);
        }
        outcomes.emplace_back("Base64");  // where none fails
        const auto request = createCertificateRequest(name.starts_with("control") ? 5 : 6);
        for (failing = 1; failing <= outcomes.size(); ++failing) {
            notes.clear();
            std::string outcome;
            try {
                outcome = toUtf8(request->getRenewalRequest(name.ends_with('7'), certificate));
            } catch (const ComException& exception) {
                EXPECT_EQ(exception.hr(), NTE_SILENT_CONTEXT);
                outcome = exception.what();
            }
            EXPECT_EQ(outcome, outcomes[failing - 1]);
            EXPECT_EQ(notes.size(), std::min(failing, calls.size())) << "goes on behind a failure";
        }
        EXPECT_EQ(notes, calls);
    }
    failing = 0;
    EXPECT_EQ(getCertificateRenewalRequest(false, certificate), L"Base64");
}

}  // namespace
