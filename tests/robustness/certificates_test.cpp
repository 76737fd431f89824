// The system's dialogs about certificates, as the DLL that is handed out asks for them.
#include "component.h"

#include <prsht.h>
#include <wincrypt.h>

#include <cryptuiapi.h>

#include <functional>

namespace robustness {
namespace {

using Corvane::Test::ImportPatch;

constexpr HRESULT notOpened = failureOf(604);

class CertificatesTest : public ComponentTest {
protected:
    ComPtr<ICertificate> signer() {
        ComPtr<IBinaryObject> content;
        ComPtr<ICertificate> certificate;
        const auto path = std::filesystem::path(CORVANE_TEST_DATA "/pki/signer.pem").wstring();
        EXPECT_EQ(service()->BinaryObjectFromFile(Bstr(path).get(), content.put()), S_OK);
        EXPECT_EQ(serviceOf<ICryptoService>(__uuidof(CryptoService))
                      ->CreateCertificateFromContent(content.get(), certificate.put()),
                  S_OK);
        return certificate;
    }

    const HMODULE module_ = ::GetModuleHandleW(componentPath().c_str());
};

// The error with which the viewer ends.
DWORD viewerError = 0;

WINBOOL WINAPI view(PCCRYPTUI_VIEWCERTIFICATE_STRUCTW view, WINBOOL* changed) {
    EXPECT_EQ(view->dwSize, sizeof(*view));
    EXPECT_TRUE(view->pCertContext && !view->hwndParent && view->dwFlags == 0 && !changed);
    ::SetLastError(viewerError);
    return viewerError == 0;
}

TEST_F(CertificatesTest, ViewerMayBeCancelled) {
    const ImportPatch patch("CryptUIDlgViewCertificateW", &view, module_);
    const auto certificate = signer();
    for (const auto& [error, expected] :
         {std::pair{0, S_OK}, {ERROR_CANCELLED, S_OK}, {ERROR_OUTOFMEMORY, failureOf(300)}}) {
        viewerError = static_cast<DWORD>(error);
        EXPECT_EQ(certificate->Display(), expected);
    }
}

// What the user does while the picker is open.
std::function<PCCERT_CONTEXT(HCERTSTORE)> whilePicking;

PCCERT_CONTEXT WINAPI pick(HCERTSTORE store, HWND parent, LPCWSTR title, LPCWSTR text, DWORD hidden,
                           DWORD flags, void*) {
    EXPECT_EQ(hidden, 0x10u) << "CRYPTUI_SELECT_LOCATION_COLUMN is not shown";
    EXPECT_TRUE(!parent && !title && !text && flags == 0);
    return whilePicking(store);
}

// The picker shows the store that another call closes in the meantime.
TEST_F(CertificatesTest, StoreThatIsClosedWhileInUseStaysOpenForItsUser) {
    const ImportPatch patch("CryptUIDlgSelectCertificateFromStore", &pick, module_);
    const auto store = serviceOf<ICertificateStore>(__uuidof(CertificateStore));
    ComPtr<ICertificate> picked;
    EXPECT_EQ(store->SelectCertificate(picked.put()), notOpened);
    ASSERT_EQ(store->Open(2, Bstr(L"CorvanePicked").get(), 1), S_OK);
    ComPtr<ICertificate> installed;
    ASSERT_EQ(store->Install(signer().get(), installed.put()), S_OK);
    whilePicking = [](HCERTSTORE) { return nullptr; };
    EXPECT_EQ(store->SelectCertificate(picked.put()), S_OK);
    EXPECT_EQ(picked.get(), nullptr) << "cancelled";

    whilePicking = [&](HCERTSTORE opened) {
        EXPECT_EQ(store->Close(), S_OK);
        return ::CertEnumCertificatesInStore(opened, nullptr);
    };
    EXPECT_EQ(store->SelectCertificate(picked.put()), S_OK);
    Bstr name;
    ASSERT_NE(picked.get(), nullptr);
    EXPECT_EQ(picked->get_CommonName(name.put()), S_OK);
    EXPECT_EQ(name.view(), L"Иванов Иван");
    EXPECT_EQ(store->get_name(name.put()), notOpened);
    EXPECT_EQ(installed->Uninstall(), S_OK);
    EXPECT_EQ(picked->Uninstall(), S_OK);
    ::RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\Microsoft\\SystemCertificates\\CorvanePicked");
}

}  // namespace
}  // namespace robustness
