// A coclass whose methods are for trusted sites only.
#pragma once

#include "com/access/browser_object.h"
#include "com/runtime/object.h"

#include <utility>

namespace Corvane::Com {

template <class T, class Coclass, class Interface>
class ServiceObject : public Object<T, Coclass, Interface, CBrowserObject<T>> {
protected:
    // The method frame with the access check before anything else. May ask the user.
    template <class Body>
    HRESULT serviceFrame(const wchar_t* method, Body&& body) noexcept {
        return this->frame(method, [&] {
            this->checkAccess(true);
            std::forward<Body>(body)();
        });
    }
};

}  // namespace Corvane::Com
