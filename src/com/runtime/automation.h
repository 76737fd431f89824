// Owners of automation's strings, variants and arrays. Running out of memory is std::bad_alloc.
#pragma once

#include "core/check.h"

#include <windows.h>

#include <oleauto.h>

#include <limits>
#include <new>
#include <string_view>
#include <utility>

namespace Corvane::Com {

// The text of a BSTR argument; a null BSTR is an empty text. Valid as long as the argument is.
inline std::wstring_view viewOf(BSTR text) noexcept {
    return text ? std::wstring_view(text, ::SysStringLen(text)) : std::wstring_view();
}

class Bstr {
public:
    Bstr() noexcept = default;
    explicit Bstr(std::wstring_view text) : text_(::SysAllocStringLen(text.data(), checked(text.size()))) {
        check();
    }
    // Room for `length` characters, not yet set, and a terminator that is.
    static Bstr uninitialized(std::size_t length) {
        Bstr text;
        text.text_ = ::SysAllocStringLen(nullptr, checked(length));
        text.check();
        return text;
    }
    Bstr(Bstr&& other) noexcept : text_(other.detach()) {}
    Bstr& operator=(Bstr&& other) noexcept {
        std::swap(text_, other.text_);
        return *this;
    }
    Bstr(const Bstr&) = delete;
    Bstr& operator=(const Bstr&) = delete;
    ~Bstr() { ::SysFreeString(text_); }

    BSTR get() const noexcept { return text_; }
    BSTR* put() noexcept {
        ::SysFreeString(detach());
        return &text_;
    }
    [[nodiscard]] BSTR detach() noexcept { return std::exchange(text_, nullptr); }
    std::wstring_view view() const noexcept { return viewOf(text_); }

private:
    // A BSTR counts its bytes in 32 bits; a longer one cannot be allocated.
    static UINT checked(std::size_t length) {
        if (length > std::numeric_limits<UINT>::max() / sizeof(OLECHAR) - sizeof(OLECHAR) - sizeof(UINT))
            throw std::bad_alloc();
        return static_cast<UINT>(length);
    }
    void check() const {
        if (!text_)
            throw std::bad_alloc();
    }

    BSTR text_ = nullptr;
};

// Turns an unsigned 32-bit number into a signed one, or a double where that is too small: VBScript compares
// and counts with no unsigned type but Byte.
inline void makeScriptNumber(VARIANT& value) noexcept {
    if (V_VT(&value) != VT_UI4 && V_VT(&value) != VT_UINT)
        return;
    const ULONG number = V_UI4(&value);
    if (number <= static_cast<ULONG>(std::numeric_limits<LONG>::max())) {
        V_VT(&value) = VT_I4;
        V_I4(&value) = static_cast<LONG>(number);
    } else {
        V_VT(&value) = VT_R8;
        V_R8(&value) = number;
    }
}

class Variant {
public:
    Variant() noexcept { ::VariantInit(&value_); }
    Variant(Variant&& other) noexcept : value_(other.detach()) {}
    Variant& operator=(Variant&& other) noexcept {
        std::swap(value_, other.value_);
        return *this;
    }
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;
    ~Variant() { ::VariantClear(&value_); }

    VARIANT& get() noexcept { return value_; }
    const VARIANT& get() const noexcept { return value_; }
    VARIANT* put() noexcept {
        ::VariantClear(&value_);
        return &value_;
    }
    [[nodiscard]] VARIANT detach() noexcept {
        const VARIANT value = value_;
        ::VariantInit(&value_);
        return value;
    }

private:
    VARIANT value_;
};

class SafeArray {
public:
    // A one-dimensional array of `count` elements, numbered from 0.
    SafeArray(VARTYPE type, ULONG count) : array_(::SafeArrayCreateVector(type, 0, checked(count))) {
        if (!array_)
            throw std::bad_alloc();
    }
    SafeArray(const SafeArray&) = delete;
    SafeArray& operator=(const SafeArray&) = delete;
    ~SafeArray() {
        if (array_)
            ::SafeArrayDestroy(array_);
    }

    SAFEARRAY* get() const noexcept { return array_; }
    [[nodiscard]] SAFEARRAY* detach() noexcept { return std::exchange(array_, nullptr); }

    // The elements, of type T, as long as this lives.
    template <class T>
    class Elements {
    public:
        explicit Elements(const SafeArray& array) : array_(array.get()) {
            checkHresult(::SafeArrayAccessData(array_, reinterpret_cast<void**>(&data_)), E_ACTIVEX,
                         L"SafeArrayAccessData");
        }
        ~Elements() { ::SafeArrayUnaccessData(array_); }
        Elements(const Elements&) = delete;
        Elements& operator=(const Elements&) = delete;

        T* data() const noexcept { return data_; }

    private:
        SAFEARRAY* array_;
        T* data_ = nullptr;
    };

private:
    // The size in bytes is counted in 32 bits, and not every system refuses what they cannot hold. No element
    // is larger than a VARIANT.
    static ULONG checked(ULONG count) {
        if (count > std::numeric_limits<ULONG>::max() / sizeof(VARIANT))
            throw std::bad_alloc();
        return count;
    }

    SAFEARRAY* array_;
};

}  // namespace Corvane::Com
