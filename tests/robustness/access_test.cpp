// What a page without trust can do with the objects that it may make itself.
#include "com/runtime/plain_object.h"
#include "component.h"

#include <array>
#include <fstream>

namespace robustness {
namespace {

class Callback final : public ScriptHost::Unscriptable<Corvane::Com::PlainObject<IDispatch>> {
public:
    ComPtr<IBinaryObject> binary;

    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT*, EXCEPINFO*,
                                     UINT*) override {
        // The first argument stands last.
        const VARIANT& result = parameters->rgvarg[parameters->cArgs - 1];
        if (V_VT(&result) == VT_DISPATCH)
            binary = ComPtr<IDispatch>(V_DISPATCH(&result)).query<IBinaryObject>();
        return S_OK;
    }
};

class AccessTest : public ComponentTest {
protected:
    ~AccessTest() override { std::filesystem::remove(path_); }

    // What is read of a stream in each way there is.
    static std::array<ComPtr<IBinaryObject>, 3> readings(::IBinaryStream& stream) {
        ComPtr<IBinaryObject> read;
        double position = -1;
        EXPECT_EQ(stream.Resize(8), S_OK);
        EXPECT_EQ(stream.Seek(0, 0, &position), S_OK);
        EXPECT_EQ(stream.Read(4, read.put()), S_OK);
        const auto called = [](auto start) {
            const auto later = Corvane::Com::makeObject<Callback>();
            EXPECT_EQ(start(later.get()), S_OK);
            EXPECT_TRUE(soon([&] { return static_cast<bool>(later->binary); }));
            return std::move(later->binary);
        };
        return {read, called([&](IDispatch* callback) { return stream.ReadAsync(4, callback); }),
                called([&](IDispatch* callback) { return stream.SeekAndReadAsync(0, 4, callback); })};
    }

    // Whether the object replaces the file. A refusal leaves it as it is, and an answer like any other.
    bool writes(const ComPtr<IBinaryObject>& object) const {
        std::ofstream(path_, std::ios::binary) << "kept";
        const HRESULT hr = object->ToFile(Bstr(path_.wstring()).get());
        std::string content;
        std::getline(std::ifstream(path_, std::ios::binary), content);
        EXPECT_EQ(content == "kept", hr == accessDenied);
        EXPECT_TRUE(hr == S_OK || hr == accessDenied) << hr;
        return hr == S_OK;
    }

    const std::filesystem::path path_ = std::filesystem::temp_directory_path() /
                                        ("corvane-access-" + std::to_string(::GetCurrentProcessId()));
    const DialogDriver driver_{[](HWND dialog) { ::SendDlgItemMessageW(dialog, IDCANCEL, BM_CLICK, 0, 0); }};
};

TEST_F(AccessTest, WhatAPageMadeItselfWritesFilesOnlyWithTrust) {
    const struct {
        const wchar_t* page;
        bool isTrusted;
        int questions;
    } rows[] = {{TrustedPage::address, true, 0}, {strangePage, false, 4}, {nullptr, false, 0}};
    for (const auto& row : rows) {
        const int before = driver_.count();
        VARIANT_BOOL access = 1;
        EXPECT_EQ(madeIn<IAbout>(row.page, __uuidof(About))->get_HasAccess(&access), S_OK);
        EXPECT_EQ(access, row.isTrusted ? VARIANT_TRUE : VARIANT_FALSE) << "which asks nobody";
        EXPECT_EQ(writes(madeIn<IBinaryObject>(row.page, __uuidof(BinaryObject))), row.isTrusted);
        for (const auto& read : readings(*madeIn<::IBinaryStream>(row.page, __uuidof(BinaryStream))))
            EXPECT_EQ(writes(read), row.isTrusted);
        EXPECT_EQ(driver_.count() - before, row.questions);
    }
}

TEST_F(AccessTest, TheSiteOfAnObjectCounts) {
    const auto object = madeIn<IBinaryObject>(TrustedPage::address, __uuidof(BinaryObject));
    EXPECT_TRUE(writes(object));
    for (const wchar_t* page : {strangePage, static_cast<const wchar_t*>(nullptr)}) {
        setSite(object, page);
        EXPECT_NE(object->ToFile(Bstr(path_.wstring()).get()), S_OK) << "no longer in a trusted page";
    }

    // What was read belongs to the page that the stream was in.
    const auto stream = madeIn<::IBinaryStream>(strangePage, __uuidof(BinaryStream));
    const auto strange = readings(*stream);
    setSite(stream, TrustedPage::address);
    EXPECT_FALSE(writes(strange[0]));
    EXPECT_TRUE(writes(readings(*stream)[0]));

    // What a checked service made works wherever it is handed to.
    ComPtr<::IBinaryStream> made;
    ASSERT_EQ(service()->CreateStream(made.put()), S_OK);
    const auto given = bytes(L"01");
    setSite(made, strangePage);
    setSite(given, strangePage);
    EXPECT_TRUE(writes(readings(*made)[0]));
    EXPECT_TRUE(writes(given));
}

}  // namespace
}  // namespace robustness
