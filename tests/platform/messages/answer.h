// Parameters of messages as callers want them: a size first, then a structure with all that it points to
// behind it.
#pragma once

#include "primitives.h"

#include <algorithm>
#include <list>

namespace Corvane::Platform::Messages {

// A structure in the caller's buffer. Without a buffer only its size is found, and what is written is
// forgotten.
class Flat {
public:
    explicit Flat(void* buffer) : buffer_(static_cast<BYTE*>(buffer)) {}

    std::size_t size() const { return used_; }

    BYTE* copy(View bytes) {
        BYTE* const place = take(bytes.size());
        std::ranges::copy(bytes, place);
        return place;
    }
    template <class Structure>
    Structure* make() {
        return reinterpret_cast<Structure*>(copy(Bytes(sizeof(Structure))));
    }
    CRYPT_DATA_BLOB blob(View bytes) { return {static_cast<DWORD>(bytes.size()), copy(bytes)}; }
    LPSTR text(const std::string& text) {
        return reinterpret_cast<LPSTR>(copy({reinterpret_cast<const BYTE*>(text.c_str()), text.size() + 1}));
    }
    CRYPT_ALGORITHM_IDENTIFIER algorithm(const AlgorithmId& id) {
        return {text(id.oid), blob(id.parameters)};
    }

private:
    BYTE* take(std::size_t size) {
        constexpr std::size_t alignment = sizeof(ULONGLONG);
        const std::size_t place = used_;
        used_ += (size + alignment - 1) / alignment * alignment;
        if (buffer_)
            return buffer_ + place;
        return forgotten_.emplace_back(size + 1).data();
    }

    BYTE* buffer_;
    std::size_t used_ = 0;
    std::list<Bytes> forgotten_;
};

// The buffer and size that a caller passed.
class Answer {
public:
    Answer(void* buffer, DWORD* size) : buffer_(buffer), size_(size) {
        if (!size)
            fail(E_INVALIDARG);
    }

    void give(View bytes) {
        if (fits(bytes.size()))
            std::ranges::copy(bytes, static_cast<BYTE*>(buffer_));
    }
    void give(DWORD number) { give(View(reinterpret_cast<const BYTE*>(&number), sizeof number)); }

    // What the system decodes the DER to.
    void give(LPCSTR structure, View der) {
        must(::CryptDecodeObject(X509_ASN_ENCODING | PKCS_7_ASN_ENCODING, structure, der.data(), sizeOf(der),
                                 0, buffer_, size_));
    }

    // `fill` puts the structure itself first.
    template <class Fill>
    void build(Fill&& fill) {
        Flat measured(nullptr);
        fill(measured);
        if (!fits(measured.size()))
            return;
        Flat written(buffer_);
        fill(written);
    }

private:
    // Tells the size; false when that is all that is wanted.
    bool fits(std::size_t needed) {
        const DWORD room = *size_;
        *size_ = static_cast<DWORD>(needed);
        if (buffer_ && room < needed)
            fail(ERROR_MORE_DATA);
        return buffer_ != nullptr;
    }

    void* buffer_;
    DWORD* size_;
};

}  // namespace Corvane::Platform::Messages
