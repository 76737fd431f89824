// What BinaryStream and FileObject have in common: the methods of IBinaryStream over an internal stream.
#pragma once

#include "com/access/browser_object.h"
#include "com/async/async.h"
#include "com/objects/binary/binary_object.h"
#include "com/runtime/arguments.h"
#include "com/runtime/object.h"
#include "stream/binary_stream.h"

#include <VetrelCorvane2_h.h>

#include <memory>

namespace Corvane::Com {

using SharedStream = std::shared_ptr<Stream::IBinaryStream>;

// By which a stream argument is recognised, whichever coclass it is.
class StreamHolder {
public:
    virtual SharedStream stream() const noexcept = 0;

protected:
    ~StreamHolder() = default;
};

// The internal stream behind an argument. Fails as resolve() does. For use inside a frame.
SharedStream streamOf(::IBinaryStream* argument);

// A number from a script as an offset or a size: whole, and of at most 53 bits, beyond which doubles have
// gaps. Throws Exception E_OFFSET_OUT_OF_RANGE; a size must not be negative either.
std::int64_t offsetOf(double number);
std::uint64_t sizeOf(double number);

// The same as a number of bytes in memory, where more than memory can hold is as much as it can hold.
std::size_t countOf(double number);

// T: the coclass; Coclass, Interface: as for Object, where Interface is IBinaryStream or derives from it.
// What is read belongs to the page that the stream belongs to.
template <class T, class Coclass, class Interface>
class CBaseStream : public Object<T, Coclass, Interface, CBrowserObject<T>>, public StreamHolder {
public:
    // Also answered to when Interface derives from it.
    using BaseInterface = ::IBinaryStream;

    explicit CBaseStream(SharedStream stream) noexcept : stream_(std::move(stream)) {}
    CBaseStream(SharedStream stream, SharedAccess access) noexcept : CBaseStream(std::move(stream)) {
        this->setAccess(std::move(access));
    }

    SharedStream stream() const noexcept override { return stream_; }

#include <methods/IBinaryStream.h>

protected:
    ~CBaseStream() override = default;

private:
    const SharedStream stream_;
};

// What the methods do to the stream, each with or without moving it to a position first.
namespace detail {

inline auto reading(SharedStream stream, SharedAccess access, double count) {
    return Operation{L"Corvane::Stream::IBinaryStream::read",
                     [stream = std::move(stream), access = std::move(access), most = countOf(count)] {
                         return AccessedBytes{stream->read(most), access};
                     }};
}

inline auto writing(SharedStream stream, IBinaryObject* data, double offset, double count) {
    return Operation{L"Corvane::Stream::IBinaryStream::write",
                     [stream = std::move(stream), bytes = bytesOf(data), begin = countOf(offset),
                      most = countOf(count)] { stream->write(Stream::part(*bytes, begin, most)); }};
}

inline auto reading(SharedStream stream, SharedAccess access, double position, double count) {
    return Operation{L"Corvane::Stream::IBinaryStream::seekAndRead",
                     [stream = std::move(stream), access = std::move(access), target = offsetOf(position),
                      most = countOf(count)] {
                         return AccessedBytes{stream->seekAndRead(target, most), access};
                     }};
}

inline auto writing(SharedStream stream, double position, IBinaryObject* data, double offset, double count) {
    return Operation{L"Corvane::Stream::IBinaryStream::seekAndWrite",
                     [stream = std::move(stream), target = offsetOf(position), bytes = bytesOf(data),
                      begin = countOf(offset), most = countOf(count)] {
                         stream->seekAndWrite(target, Stream::part(*bytes, begin, most));
                     }};
}

}  // namespace detail

template <class T, class Coclass, class Interface>
HRESULT CBaseStream<T, Coclass, Interface>::get_Position(double* position) {
    return this->frame(L"CBaseStream::get_Position",
                       [&] { give(position, static_cast<double>(stream_->state().position)); });
}

template <class T, class Coclass, class Interface>
HRESULT CBaseStream<T, Coclass, Interface>::get_Size(double* size) {
    return this->frame(L"CBaseStream::get_Size",
                       [&] { give(size, static_cast<double>(stream_->state().size)); });
}

template <class T, class Coclass, class Interface>
HRESULT CBaseStream<T, Coclass, Interface>::Seek(double position, ULONG location, double* newPosition) {
    return this->frame(L"CBaseStream::Seek", [&] {
        const auto origin = static_cast<Stream::Origin>(location);
        give(newPosition, static_cast<double>(stream_->seek(offsetOf(position), origin)));
    });
}

template <class T, class Coclass, class Interface>
HRESULT CBaseStream<T, Coclass, Interface>::Close() {
    return this->frame(L"CBaseStream::Close", [&] { stream_->close(); });
}

template <class T, class Coclass, class Interface>
HRESULT CBaseStream<T, Coclass, Interface>::Resize(double val) {
    return this->frame(L"CBaseStream::Resize", [&] { stream_->resize(sizeOf(val)); });
}

template <class T, class Coclass, class Interface>
HRESULT CBaseStream<T, Coclass, Interface>::Read(double count, IBinaryObject** binary) {
    return this->frame(L"CBaseStream::Read",
                       [&] { run(binary, detail::reading(stream_, this->access(), count)); });
}

template <class T, class Coclass, class Interface>
HRESULT CBaseStream<T, Coclass, Interface>::Write(IBinaryObject* pData, double offset, double count) {
    return this->frame(L"CBaseStream::Write", [&] { run(detail::writing(stream_, pData, offset, count)); });
}

template <class T, class Coclass, class Interface>
HRESULT CBaseStream<T, Coclass, Interface>::ReadAsync(double count, IDispatch* pCallback) {
    return this->frame(L"CBaseStream::ReadAsync",
                       [&] { start(pCallback, detail::reading(stream_, this->access(), count)); });
}

template <class T, class Coclass, class Interface>
HRESULT CBaseStream<T, Coclass, Interface>::WriteAsync(IBinaryObject* pData, double offset, double count,
                                                       IDispatch* pCallback) {
    return this->frame(L"CBaseStream::WriteAsync",
                       [&] { start(pCallback, detail::writing(stream_, pData, offset, count)); });
}

template <class T, class Coclass, class Interface>
HRESULT CBaseStream<T, Coclass, Interface>::SeekAndReadAsync(double position, double count,
                                                             IDispatch* pCallback) {
    return this->frame(L"CBaseStream::SeekAndReadAsync",
                       [&] { start(pCallback, detail::reading(stream_, this->access(), position, count)); });
}

template <class T, class Coclass, class Interface>
HRESULT CBaseStream<T, Coclass, Interface>::SeekAndWriteAsync(double position, IBinaryObject* pData,
                                                              double offset, double count,
                                                              IDispatch* pCallback) {
    return this->frame(L"CBaseStream::SeekAndWriteAsync",
                       [&] { start(pCallback, detail::writing(stream_, position, pData, offset, count)); });
}

}  // namespace Corvane::Com
