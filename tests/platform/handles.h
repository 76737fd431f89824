// What the handles that a stand-in gave stand for; any thread may use them.
#pragma once

#include <windows.h>

#include <map>
#include <memory>
#include <mutex>

namespace Corvane::Platform {

template <class Object>
class Handles {
public:
    ULONG_PTR add(std::unique_ptr<Object> object) {
        const std::lock_guard lock(mutex_);
        const auto handle = reinterpret_cast<ULONG_PTR>(object.get());
        objects_[handle] = std::move(object);
        return handle;
    }
    // Null for a number that is none of them.
    Object* find(ULONG_PTR handle) {
        const std::lock_guard lock(mutex_);
        const auto found = objects_.find(handle);
        return found == objects_.end() ? nullptr : found->second.get();
    }
    // Whether it was there.
    bool remove(ULONG_PTR handle) {
        const std::lock_guard lock(mutex_);
        return objects_.erase(handle) != 0;
    }

private:
    std::mutex mutex_;
    std::map<ULONG_PTR, std::unique_ptr<Object>> objects_;
};

}  // namespace Corvane::Platform
