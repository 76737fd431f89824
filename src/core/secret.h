// Buffers for what nobody else may learn: PINs, passwords, key blobs. They wipe themselves, cannot be copied
// and cannot be written to the log.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace Corvane {

// Fills the memory with zeros, also where the compiler sees that nobody reads it afterwards.
void wipe(void* memory, std::size_t size) noexcept;

namespace detail {

// Wipes what it gives back to `Base`.
template <class T, template <class> class Base = std::allocator>
struct WipingAllocator : Base<T> {
    using value_type = T;
    template <class U>
    struct rebind {
        using other = WipingAllocator<U, Base>;
    };

    void deallocate(T* memory, std::size_t count) noexcept {
        wipe(memory, count * sizeof(T));
        Base<T>::deallocate(memory, count);
    }
};

}  // namespace detail

// Secret units of one kind. Moving leaves the source empty; whoever reads through the views keeps no copy.
template <class Unit, class Allocator = detail::WipingAllocator<Unit>>
class Secret {
public:
    Secret() noexcept = default;
    explicit Secret(std::size_t size) : units_(size) {}
    explicit Secret(std::span<const Unit> units) : units_(units.begin(), units.end()) {}
    explicit Secret(std::basic_string_view<Unit> text) requires(!std::is_same_v<Unit, std::uint8_t>)
        : units_(text.begin(), text.end()) {}

    Secret(Secret&& other) noexcept : units_(std::exchange(other.units_, {})) {}
    Secret& operator=(Secret&& other) noexcept {
        Units old = std::exchange(units_, std::exchange(other.units_, {}));
        return *this;
    }
    Secret(const Secret&) = delete;
    Secret& operator=(const Secret&) = delete;
    ~Secret() = default;

    Unit* data() noexcept { return units_.data(); }
    const Unit* data() const noexcept { return units_.data(); }
    std::size_t size() const noexcept { return units_.size(); }
    bool empty() const noexcept { return units_.empty(); }

    // What is cut off is wiped when the buffer is.
    void resize(std::size_t size) { units_.resize(size); }

private:
    using Units = std::vector<Unit, Allocator>;
    Units units_;
};

using SecretBytes = Secret<std::uint8_t>;
using SecretText = Secret<wchar_t>;
using SecretNarrowText = Secret<char>;

}  // namespace Corvane
