// What a handle of CryptMsgOpenToEncode or CryptMsgOpenToDecode stands for, and where its answers go.
#pragma once

#include "crypto.h"

#include <algorithm>
#include <list>
#include <memory>

namespace Corvane::Platform::Messages {

namespace Oid {
constexpr char data[] = "1.2.840.113549.1.7.1", signedData[] = "1.2.840.113549.1.7.2",
               envelopedData[] = "1.2.840.113549.1.7.3", contentType[] = "1.2.840.113549.1.9.3",
               messageDigest[] = "1.2.840.113549.1.9.4", rsa[] = "1.2.840.113549.1.1.1",
               keyIdentifierName[] = "1.3.6.1.4.1.311.10.7.1";
}  // namespace Oid

// A parameter of our own: whether a signed message has content in it, as a DWORD.
constexpr DWORD hasContentParam = 0x7F000001;

template <class Body>
bool succeeds(Body&& body) noexcept {
    return succeedsWith<CRYPT_E_ASN1_EOD, CRYPT_E_ASN1_BADTAG, E_UNEXPECTED>(body);
}

// A structure in the caller's buffer, with all that it points to behind it. Without a buffer only its size is
// found, and what is written is forgotten.
class Flat {
public:
    explicit Flat(void* buffer) : buffer_(static_cast<BYTE*>(buffer)) {}

    std::size_t size() const { return used_; }

    BYTE* copy(View bytes) {
        constexpr std::size_t alignment = sizeof(ULONGLONG);
        BYTE* const place = buffer_ ? buffer_ + used_
                                    : forgotten_.emplace_back(std::max<std::size_t>(bytes.size(), 1)).data();
        used_ += (bytes.size() + alignment - 1) / alignment * alignment;
        std::ranges::copy(bytes, place);
        return place;
    }
    template <class Structure>
    Structure& make() {
        return *reinterpret_cast<Structure*>(copy(Bytes(sizeof(Structure))));
    }
    CRYPT_DATA_BLOB blob(View bytes) { return {lengthOf(bytes), copy(bytes)}; }
    LPSTR text(const std::string& text) {
        return reinterpret_cast<LPSTR>(copy({reinterpret_cast<const BYTE*>(text.c_str()), text.size() + 1}));
    }

private:
    BYTE* buffer_;
    std::size_t used_ = 0;
    std::list<Bytes> forgotten_;
};

// The buffer and size that a caller passed: a size first, then what it asks for.
class Answer {
public:
    Answer(void* buffer, DWORD* size) : buffer_(buffer), size_(size) {}

    void give(View bytes) {
        if (fits(bytes.size()))
            std::ranges::copy(bytes, static_cast<BYTE*>(buffer_));
    }
    void give(std::size_t number) { give(viewOfStructure(static_cast<DWORD>(number))); }

    // What the system decodes the DER to.
    void give(LPCSTR structure, View der) {
        must(::CryptDecodeObject(encodings, structure, der.data(), lengthOf(der), 0, buffer_, size_));
    }

    // `fill` puts the structure itself first.
    template <class Fill>
    void build(Fill&& fill) {
        Flat measured(nullptr);
        fill(measured);
        Flat written(buffer_);
        if (fits(measured.size()))
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

// Where a message's output goes: to the caller's function as it comes, or into memory.
class Sink {
public:
    explicit Sink(const CMSG_STREAM_INFO* stream) : stream_(stream ? *stream : CMSG_STREAM_INFO{}) {}

    bool isStream() const { return stream_.pfnStreamOutput != nullptr; }
    const Bytes& collected() const { return collected_; }

    // Fails with the code that the caller's function leaves when it refuses.
    void put(View bytes) {
        if (!isStream())
            append(collected_, bytes);
        else if (!bytes.empty())
            must(stream_.pfnStreamOutput(stream_.pvArg, const_cast<BYTE*>(bytes.data()), lengthOf(bytes),
                                         FALSE));
    }

private:
    CMSG_STREAM_INFO stream_;
    Bytes collected_;
};

class Message {
public:
    explicit Message(const CMSG_STREAM_INFO* stream) : sink_(stream) {}
    Message(const Message&) = delete;
    Message& operator=(const Message&) = delete;
    virtual ~Message() = default;

    virtual void update(View bytes, bool isFinal) = 0;
    virtual void parameter(DWORD type, DWORD index, Answer answer) = 0;
    virtual void control(DWORD, const void*) {}

protected:
    Sink sink_;
};

using OwnedMessage = std::unique_ptr<Message>;

OwnedMessage encodeSigned(DWORD flags, const CMSG_SIGNED_ENCODE_INFO& info, const CMSG_STREAM_INFO* stream);
OwnedMessage encodeEnveloped(const CMSG_ENVELOPED_ENCODE_INFO& info, const CMSG_STREAM_INFO* stream);
OwnedMessage decode(bool isDetached, const CMSG_STREAM_INFO* stream);

// The shape that signed and enveloped messages share: a head, content in one octet string, and an end. In a
// stream the outer elements are of indefinite length, and the content comes in pieces.
struct Layout {
    Bytes type;               // of the message
    Bytes head;               // what stands before the inner element with the content
    Bytes innerHead;          // what stands before the content in it
    bool isImplicit = false;  // the content has the tag [0] itself
    bool hasContent = true;   // else there is not even an empty one

    Bytes whole(View content, View after) const;
    Bytes start() const;
    Bytes piece(View content) const;
    Bytes end(View after) const;
};

}  // namespace Corvane::Platform::Messages
