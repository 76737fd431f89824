// The qualified name of a method that several classes have from one template, put together by the compiler.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

namespace Corvane::Com {

// A text as an argument of a template.
template <std::size_t size>
struct Text {
    // NOLINTNEXTLINE(google-explicit-constructor): so that a literal can stand for it
    consteval Text(const wchar_t (&text)[size]) { std::copy_n(text, size, units); }

    wchar_t units[size]{};
};

namespace detail {

template <Text class_, Text method>
struct MethodName {
    static constexpr auto value = [] {
        constexpr std::size_t length = std::size(class_.units) - 1;
        std::array<wchar_t, length + 2 + std::size(method.units)> name{};
        auto* end = std::copy_n(class_.units, length, name.data());
        *end++ = L':';
        *end++ = L':';
        std::copy_n(method.units, std::size(method.units), end);
        return name;
    }();
};

}  // namespace detail

// "CClass::Method" of a class that tells its own name as its static constant `className`, a Text.
template <class T, Text method>
constexpr const wchar_t* methodName() noexcept {
    return detail::MethodName<T::className, method>::value.data();
}

}  // namespace Corvane::Com
