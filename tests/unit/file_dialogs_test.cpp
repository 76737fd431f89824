#include "gui/file_dialogs.h"

#include "dialog_driver.h"
#include "platform/import_patch.h"
#include "soon.h"
#include "support.h"
#include "system_dialogs.h"

#include <filesystem>

using namespace Corvane;
using namespace Corvane::Gui;
using namespace Corvane::Test;
using namespace std::string_literals;

namespace {

constexpr std::uint32_t dialogFailed = 200;
constexpr std::uint32_t badOptions = 202;
constexpr std::uint32_t busy = 170;  // ERROR_BUSY

bool isTopmost(HWND window) {
    return (::GetWindowLongPtrW(window, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0;
}

std::wstring show(DialogKind kind, const DialogOptions& options = {}, HWND owner = nullptr) {
    return kind == DialogKind::openFile    ? showOpenDialog(owner, options)
           : kind == DialogKind::openFiles ? showMultipleOpenDialog(owner, options)
           : kind == DialogKind::saveFile  ? showSaveDialog(owner, L"имя.txt", options)
                                           : showSelectFolderDialog(owner, options);
}

constexpr DialogKind allKinds[] = {DialogKind::openFile, DialogKind::openFiles, DialogKind::saveFile,
                                   DialogKind::selectFolder};

TEST(FileDialogs, TheSystemIsAskedAsTheOptionsSay) {
    const Apartment apartment;
    const DialogOptions options{L"Название", L"Текст\0*.txt\0"s, L"C:\\Папка", 7};
    const struct {
        DialogKind kind;
        DWORD flags;
        const wchar_t* begin;
        DWORD room;  // at least
    } rows[] = {
        {DialogKind::openFile, 0x881804, L"", 32'768},
        {DialogKind::openFiles, 0x881A04, L"", 32'767 * 256},
        {DialogKind::saveFile, 0x4, L"имя.txt", 32'768},
    };
    SystemDialogs system;
    for (const auto& row : rows) {
        EXPECT_EQ(show(row.kind, options), L"");
        EXPECT_EQ(system.isSave, row.kind == DialogKind::saveFile);
        EXPECT_EQ(system.file.lStructSize, sizeof(void*) == 4 ? 88U : 152U);
        EXPECT_EQ(system.file.Flags, row.flags);
        EXPECT_EQ(system.title, options.title);
        EXPECT_EQ(system.filter, L"Текст\0*.txt\0\0"s);
        EXPECT_EQ(system.file.nFilterIndex, 7U);
        EXPECT_EQ(system.initialDir, options.initialDir);
        EXPECT_EQ(system.begin, row.begin);
        EXPECT_GE(system.file.nMaxFile, row.room);
        EXPECT_EQ(show(row.kind), L"");
        EXPECT_EQ(system.title + system.filter + system.initialDir, L"---");
    }
    EXPECT_EQ(show(DialogKind::openFile, {std::wstring(100'000, L't'), L"", std::wstring(100'000, L'd'), -1}),
              L"");
    EXPECT_EQ(system.title, std::wstring(1'000, L't')) << "no screen shows more";
    EXPECT_EQ(system.initialDir, L"-") << "no path is that long";
    EXPECT_EQ(system.file.nFilterIndex, 0U);

    EXPECT_EQ(show(DialogKind::selectFolder, options), L"");
    EXPECT_EQ(system.folder.ulFlags, 0x51U);
    EXPECT_EQ(system.title, options.title);
}

TEST(FileDialogs, WhileOneIsOpenThereIsNoOtherAndTheOwnerIsDisabled) {
    const Apartment apartment;
    const auto before = std::filesystem::current_path();
    SystemDialogs system;
    for (const bool hasOwner : {true, false}) {
        const HWND owner = hasOwner ? makeOwner() : nullptr;
        system.answer = hasOwner ? L"C:\\a" : L"";
        system.whileOpen = [&](HWND host) {
            EXPECT_EQ(::GetClassLongPtrW(host, GCW_ATOM), 32770U);
            EXPECT_EQ(::GetWindow(host, GW_OWNER), owner);
            EXPECT_FALSE(::IsWindowVisible(host));
            EXPECT_TRUE(isTopmost(host));
            EXPECT_FALSE(::IsWindowEnabled(owner));
            // The message that has the dialog shown, from somebody else: there is one dialog for a call.
            ::SendMessageW(host, WM_USER + 2, 0, 0);
            for (const DialogKind kind : allKinds) {
                const auto again = [=] { show(kind); };
                EXPECT_EQ(failureOf(again), Failure(dialogFailed, busy)) << "from a callback";
                std::jthread(
                    [&] { EXPECT_EQ(failureOf(again), Failure(dialogFailed, busy)) << "elsewhere"; });
            }
            ::SetCurrentDirectoryW(L"C:\\");
        };
        for (const DialogKind kind : allKinds) {
            EXPECT_EQ(show(kind, {}, owner), system.answer);
            EXPECT_EQ(std::exchange(system.calls, 0), 1);
            EXPECT_EQ(!hasOwner || ::IsWindowEnabled(owner), true);
            if (kind == DialogKind::selectFolder)
                std::filesystem::current_path(before);
            EXPECT_EQ(std::filesystem::current_path(), before) << "is kept";
        }
        ::DestroyWindow(owner);
    }
}

TEST(FileDialogs, ChoicesComeBackWhole) {
    const Apartment apartment;
    SystemDialogs system;
    system.answer.assign(32'766, L'd');
    for (const DialogKind kind : {DialogKind::openFile, DialogKind::openFiles, DialogKind::saveFile})
        EXPECT_EQ(show(kind), system.answer);

    // As many files as there is room for, with the longest names.
    system.answer = L"C:\\dir";
    std::wstring expected = system.answer;
    for (int i = 0; i < 32'767; ++i) {
        const std::wstring name(255, static_cast<wchar_t>(L'a' + i % 26));
        system.answer += L'\0' + name;
        expected += L'|' + name;
    }
    EXPECT_EQ(show(DialogKind::openFiles), expected);
}

TEST(FileDialogs, FailuresOfTheSystemTravelToTheCaller) {
    const Apartment apartment;
    const auto before = std::filesystem::current_path();
    SystemDialogs system;
    system.error = 0x3003;
    try {
        showSaveDialog(nullptr, L"a*b", {});
        ADD_FAILURE();
    } catch (const CommDlgException& exception) {
        EXPECT_EQ(fullMessage(exception), L"[200] Ошибка при открытии диалога (0x3003)");
    }
    system.error = 0;
    system.answer.assign(MAX_PATH, L'f');
    EXPECT_EQ(failureOf([] { showSelectFolderDialog(nullptr, {}); }), Failure(dialogFailed, 0))
        << "a folder whose path is too long";
    system.whileOpen = [](HWND) {
        ::SetCurrentDirectoryW(L"C:\\");
        throw std::bad_alloc();
    };
    for (const DialogKind kind :
         {DialogKind::selectFolder, DialogKind::openFile, DialogKind::openFiles, DialogKind::saveFile}) {
        std::filesystem::current_path(before);
        EXPECT_THROW(show(kind), std::bad_alloc);
    }
    EXPECT_EQ(std::filesystem::current_path(), before);

    system.calls = 0;
    EXPECT_THROW(showSaveDialog(nullptr, std::wstring(260, L'n'), {}), std::exception);
    const HWND gone = makeOwner();
    ::DestroyWindow(gone);
    EXPECT_EQ(failureOf([=] { showOpenDialog(gone, {}); }), Failure(badOptions, ERROR_INVALID_WINDOW_HANDLE));
    {
        const ImportPatch patch(&::PostMessageW, &refusePost);
        EXPECT_EQ(failureOf([] { showOpenDialog(nullptr, {}); }),
                  Failure(badOptions, ERROR_NOT_ENOUGH_QUOTA));
    }
    EXPECT_EQ(system.calls, 0);
    system.whileOpen = [](HWND) {};
    system.answer = L"n";
    EXPECT_EQ(showSaveDialog(nullptr, std::wstring(259, L'n'), {}), L"n") << "and nothing stands in the way";
}

LRESULT CALLBACK answerProcedure(HWND window, UINT message, WPARAM first, LPARAM second) {
    return message == WM_APP ? 42 : ::DefWindowProcW(window, message, first, second);
}

// The folder browser fails in the multithreaded apartment without a word.
TEST(FileDialogs, ThreadsWithoutAnApartmentOfTheirOwnAreServedByOne) {
    SystemDialogs system;
    const auto serve = [&](bool isElsewhere) {
        const HWND owner = makeOwner();
        ::SetWindowLongPtrW(owner, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(answerProcedure));
        const DWORD caller = ::GetCurrentThreadId();
        system.answer = L"C:\\a";
        system.whileOpen = [&](HWND) {
            EXPECT_TRUE(isApartmentThreaded());
            EXPECT_TRUE(!isElsewhere || ::GetCurrentThreadId() != caller);
            EXPECT_EQ(::SendMessageW(owner, WM_APP, 0, 0), 42) << "the owner answers";
            if (isElsewhere)
                ::PostThreadMessageW(caller, WM_QUIT, 7, 0);
        };
        for (const DialogKind kind : allKinds) {
            EXPECT_EQ(show(kind, {}, owner), L"C:\\a");
            MSG message{};
            EXPECT_EQ(::PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE), isElsewhere);
            EXPECT_EQ(message.wParam, isElsewhere ? 7U : 0U) << "what ends the caller's own loop";
        }
        ::DestroyWindow(owner);
        system.whileOpen = [](HWND) { throw std::bad_alloc(); };
        EXPECT_THROW(show(DialogKind::openFile), std::bad_alloc);
    };
    std::jthread([&] {
        const Apartment apartment(COINIT_MULTITHREADED);
        serve(true);
    }).join();
    std::jthread([&] { serve(false); }).join();  // without COM, which an input method may bring along later
}

#ifdef _WIN64  // Wine's 32-bit programs on a 64-bit system without 32-bit libraries show no such dialogs

TEST(RealFileDialogs, FilesOfAnyNameAreChosen) {
    constexpr int nameEdit = 1148;  // cmb13 of dlgs.h
    const Apartment apartment;
    const auto before = std::filesystem::current_path();
    const auto folder = std::filesystem::temp_directory_path() / L"выбор файлов";
    std::filesystem::create_directories(folder);
    const std::wstring name = L"файл \x05D0\x65E5 \xD83D\xDE00.txt";
    const std::wstring longName = std::wstring(200, L'n') + L".txt";
    for (const std::wstring& each : {name, longName, L"b.txt"s})
        std::ofstream(folder / each) << "x";
    const auto chosen = [&](DialogKind kind, const std::wstring& typed) {
        const DialogDriver driver([&](HWND dialog) {
            EXPECT_TRUE(isTopmost(dialog));
            EXPECT_FALSE(::IsWindowVisible(::GetWindow(dialog, GW_OWNER)));
            if (!typed.empty())
                ::SetDlgItemTextW(dialog, nameEdit, typed.c_str());
            ::PostMessageW(dialog, WM_COMMAND, IDOK, 0);
        });
        DialogOptions options = parseJsonOptions(kind, L"");
        options.initialDir = folder.wstring();
        return show(kind, options);
    };
    for (const DialogKind kind : {DialogKind::openFile, DialogKind::openFiles, DialogKind::saveFile})
        EXPECT_EQ(chosen(kind, name), (folder / name).wstring());
    EXPECT_EQ(chosen(DialogKind::openFiles, L"\"b.txt\" \"" + name + L"\""),
              folder.wstring() + L"|b.txt|" + name);
    EXPECT_EQ(chosen(DialogKind::saveFile, L"new.txt"), (folder / L"new.txt").wstring());
    EXPECT_EQ(chosen(DialogKind::openFile, (folder / longName).wstring()), (folder / longName).wstring());
    EXPECT_EQ(std::filesystem::current_path(), before);
    EXPECT_EQ(chosen(DialogKind::selectFolder, L""), folder.wstring());
    std::filesystem::remove_all(folder);
}

#endif

}  // namespace
