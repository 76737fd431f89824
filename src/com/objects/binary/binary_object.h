// BinaryObject: the one value type in which bytes cross the COM boundary.
#pragma once

#include "binary/bytes.h"
#include "com/access/browser_object.h"
#include "com/async/async.h"
#include "com/runtime/object.h"
#include "core/lock.h"

#include <VetrelCorvane2_h.h>

class CBinaryObject final
    : public Corvane::Com::Object<CBinaryObject, BinaryObject, IBinaryObject, CBrowserObject<CBinaryObject>> {
public:
    // What a page makes itself: it belongs to the page of its site.
    CBinaryObject() = default;
    // Throws Exception E_BINARY_MAX_SIZE beyond largestBinary.
    CBinaryObject(Corvane::SharedBytes bytes, Corvane::Com::SharedAccess access);

    // The bytes, shared; null when the object holds none. Any thread.
    Corvane::SharedBytes bytes() const;

#include <methods/IBinaryObject.h>

private:
    mutable Corvane::SharedMutex mutex_;  // guards the pointer; what it points to never changes
    Corvane::SharedBytes bytes_;
};

namespace Corvane::Com {

// The bytes behind an IBinaryObject argument, never null. Fails as resolve() does.
SharedBytes bytesOf(IBinaryObject* object);

// The same for an argument that may be left out, undefined, null or Nothing: null then. Anything but an
// object is DISP_E_TYPEMISMATCH.
SharedBytes optionalBytesOf(const VARIANT& argument);

// A new BinaryObject that holds the bytes. For services, and for objects that only services make.
ComPtr<CBinaryObject> makeBinary(Bytes bytes);

// Bytes of a page, or of what belongs to it.
struct AccessedBytes {
    SharedBytes bytes;
    SharedAccess access;
};

// Bytes reach a script as a new BinaryObject, of the page that they came from; those that come without were
// made by a service.
template <>
struct ScriptResult<AccessedBytes> {
    static ComPtr<CBinaryObject> make(AccessedBytes bytes) {
        return makeObject<CBinaryObject>(std::move(bytes.bytes), std::move(bytes.access));
    }
};

template <>
struct ScriptResult<SharedBytes> {
    static ComPtr<CBinaryObject> make(SharedBytes bytes) {
        return makeObject<CBinaryObject>(std::move(bytes), PageAccess::checked());
    }
};

template <>
struct ScriptResult<Bytes> {
    static ComPtr<CBinaryObject> make(Bytes bytes) { return makeBinary(std::move(bytes)); }
};

}  // namespace Corvane::Com
