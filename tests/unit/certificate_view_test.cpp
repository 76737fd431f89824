// Shows the system's own dialogs and answers them from another thread, as a user would.
#include "crypto/certificate_view.h"

#include "unit/dialog_driver.h"
#include "unit/pki.h"

#include <commctrl.h>

#include <gtest/gtest.h>

using namespace Corvane;
using namespace Corvane::Test;

namespace {

// Chooses a line of the dialog's list, wherever in the dialog that is.
void choose(HWND dialog, int line) {
    LVITEMW item{};
    item.state = item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    for (HWND child = ::GetWindow(dialog, GW_CHILD); child; child = ::GetWindow(child, GW_HWNDNEXT))
        ::SendMessageW(child, LVM_SETITEMSTATE, static_cast<WPARAM>(line), reinterpret_cast<LPARAM>(&item));
}

TEST(CertificateView, PickedCertificateIsTheOneChosen) {
    const SharedStore store = CertificateStore::open(userStores, L"CorvaneDialogTest", false, false);
    for (const char* name : {"root", "second"})
        store->install(pkiCertificate(name));
    const Certificates shown = store->getCertificates(detail::CertSelectAllFn(), false);
    ASSERT_GE(shown.size(), 2u);
    for (int line = 0; line < 2; ++line) {
        const DialogDriver driver([&](HWND dialog) {
            choose(dialog, line);
            ::PostMessageW(dialog, WM_COMMAND, IDOK, 0);
        });
        const SharedCertificate picked = Crypto::selectCertificateFromStore(*store);
        ASSERT_NE(picked, nullptr);
        EXPECT_EQ(picked->getContent(), shown[static_cast<std::size_t>(line)]->getContent());
    }

    const DialogDriver driver([](HWND dialog) { ::PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0); });
    EXPECT_EQ(Crypto::selectCertificateFromStore(L"CorvaneDialogTest", userStores), nullptr);
    EXPECT_EQ(driver.count(), 1);
    ::RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\Microsoft\\SystemCertificates\\CorvaneDialogTest");
}

// On 64 bits only: Wine's 32-bit viewer divides by zero in its own code before it shows anything.
#ifdef _WIN64
TEST(CertificateView, ViewerMayBeClosedInEveryWay) {
    const Certificate certificate = pkiCertificate("signer");
    for (const auto& [message, command] :
         {std::pair{WM_COMMAND, IDOK}, {WM_COMMAND, IDCANCEL}, {WM_CLOSE, 0}}) {
        const DialogDriver driver([posted = message, value = command](HWND dialog) {
            ::PostMessageW(dialog, static_cast<UINT>(posted), static_cast<WPARAM>(value), 0);
        });
        EXPECT_NO_THROW(Crypto::viewCertificate(certificate));
        EXPECT_EQ(driver.count(), 1);
    }
}
#endif

}  // namespace
