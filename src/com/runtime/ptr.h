// Owner of one reference to a COM object.
#pragma once

#include <windows.h>

#include <unknwn.h>

#include <utility>

namespace Corvane::Com {

template <class Interface>
class ComPtr {
public:
    ComPtr() noexcept = default;
    // Shares the object: takes a reference of its own.
    explicit ComPtr(Interface* object) noexcept : object_(object) {
        if (object_)
            object_->AddRef();
    }
    ComPtr(const ComPtr& other) noexcept : ComPtr(other.object_) {}
    ComPtr(ComPtr&& other) noexcept : object_(other.detach()) {}
    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~ComPtr() { reset(); }

    // Takes over a reference that the caller owns.
    static ComPtr adopt(Interface* object) noexcept {
        ComPtr pointer;
        pointer.object_ = object;
        return pointer;
    }

    explicit operator bool() const noexcept { return object_ != nullptr; }
    Interface* get() const noexcept { return object_; }
    Interface* operator->() const noexcept { return object_; }
    Interface& operator*() const noexcept { return *object_; }

    // Where a call may store a reference that it hands over.
    Interface** put() noexcept {
        reset();
        return &object_;
    }
    void** putVoid() noexcept { return reinterpret_cast<void**>(put()); }

    [[nodiscard]] Interface* detach() noexcept { return std::exchange(object_, nullptr); }

    void reset() noexcept {
        if (Interface* object = detach())
            object->Release();
    }

    // The same object under another interface; empty when it does not offer it.
    template <class Other>
    ComPtr<Other> query() const noexcept {
        ComPtr<Other> other;
        if (object_)
            object_->QueryInterface(__uuidof(Other), other.putVoid());
        return other;
    }

private:
    Interface* object_ = nullptr;
};

// A new object of class T; the caller's pointer is its only reference.
template <class T, class... Arguments>
ComPtr<T> makeObject(Arguments&&... arguments) {
    return ComPtr<T>::adopt(new T(std::forward<Arguments>(arguments)...));
}

}  // namespace Corvane::Com
