// What BinaryStream and FileObject have in common: the methods of IBinaryStream over an internal stream.
#pragma once

#include "com/arguments.h"
#include "com/async.h"
#include "com/binary_object.h"
#include "com/named_call.h"
#include "com/object.h"
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

// A line in the log about an argument of `function`, of that name: the position and size of a stream and, of
// a file, the path; not what it holds.
void logStream(const wchar_t* function, const wchar_t* name, const Stream::IBinaryStream& stream);

// A number from a script as an offset or a size: whole, and of at most 53 bits, beyond which doubles have
// gaps. Throws Exception E_OFFSET_OUT_OF_RANGE; a size must not be negative either.
std::int64_t offsetOf(double number);
std::uint64_t sizeOf(double number);

}  // namespace Corvane::Com

// T: the coclass; Coclass, Interface: as for Object, where Interface is IBinaryStream or derives from it.
template <class T, class Coclass, class Interface>
class CBaseStream : public Corvane::Com::Object<T, Coclass, Interface>, public Corvane::Com::StreamHolder {
public:
    // Also answered to when Interface derives from it.
    using BaseInterface = ::IBinaryStream;

    explicit CBaseStream(Corvane::Com::SharedStream stream) noexcept : stream_(std::move(stream)) {}

    Corvane::Com::SharedStream stream() const noexcept override { return stream_; }

    HRESULT STDMETHODCALLTYPE get_Position(double* position) override {
        return this->frame(L"CBaseStream::get_Position", [&] {
            Corvane::Com::give(position, static_cast<double>(stream_->state().position));
        });
    }

    HRESULT STDMETHODCALLTYPE get_Size(double* size) override {
        return this->frame(L"CBaseStream::get_Size",
                           [&] { Corvane::Com::give(size, static_cast<double>(stream_->state().size)); });
    }

    HRESULT STDMETHODCALLTYPE Seek(double position, ULONG location, double* newPosition) override {
        return this->frame(L"CBaseStream::Seek", [&] {
            const auto origin = static_cast<Corvane::Stream::Origin>(location);
            Corvane::Com::give(newPosition,
                               static_cast<double>(stream_->seek(Corvane::Com::offsetOf(position), origin)));
        });
    }

    HRESULT STDMETHODCALLTYPE Close() override {
        return this->frame(L"CBaseStream::Close", [&] { stream_->close(); });
    }

    HRESULT STDMETHODCALLTYPE Resize(double val) override {
        return this->frame(L"CBaseStream::Resize", [&] { stream_->resize(Corvane::Com::sizeOf(val)); });
    }

    HRESULT STDMETHODCALLTYPE Read(ULONG count, IBinaryObject** binary) override {
        return this->frame(L"CBaseStream::Read", [&] {
            Corvane::Com::give(binary,
                               Corvane::Com::makeObject<CBinaryObject>(stream_->read(std::size_t{count})));
        });
    }

    HRESULT STDMETHODCALLTYPE Write(IBinaryObject* pData, ULONG offset, ULONG count) override {
        return this->frame(L"CBaseStream::Write", [&] {
            const Corvane::SharedBytes bytes = Corvane::Com::bytesOf(pData);
            stream_->write(Corvane::Stream::part(*bytes, offset, count));
        });
    }

    HRESULT STDMETHODCALLTYPE ReadAsync(ULONG count, IDispatch* pCallback) override {
        return this->frame(L"CBaseStream::ReadAsync", [&] {
            Corvane::Com::startAsync(
                pCallback, Corvane::Com::named(L"CBaseStream::ReadAsync", [stream = stream_, count] {
                    return stream->read(std::size_t{count});
                }));
        });
    }

    HRESULT STDMETHODCALLTYPE WriteAsync(IBinaryObject* pData, ULONG offset, ULONG count,
                                         IDispatch* pCallback) override {
        return this->frame(L"CBaseStream::WriteAsync", [&] {
            Corvane::Com::startAsync(
                pCallback,
                Corvane::Com::named(L"CBaseStream::WriteAsync",
                                    [stream = stream_, bytes = Corvane::Com::bytesOf(pData), offset, count] {
                                        stream->write(Corvane::Stream::part(*bytes, offset, count));
                                    }));
        });
    }

    HRESULT STDMETHODCALLTYPE SeekAndReadAsync(double position, ULONG count, IDispatch* pCallback) override {
        return this->frame(L"CBaseStream::SeekAndReadAsync", [&] {
            const std::int64_t offset = Corvane::Com::offsetOf(position);
            Corvane::Com::startAsync(
                pCallback,
                Corvane::Com::named(L"CBaseStream::SeekAndReadAsync", [stream = stream_, offset, count] {
                    return stream->seekAndRead(offset, count);
                }));
        });
    }

    HRESULT STDMETHODCALLTYPE SeekAndWriteAsync(double position, IBinaryObject* pData, ULONG offset,
                                                ULONG count, IDispatch* pCallback) override {
        return this->frame(L"CBaseStream::SeekAndWriteAsync", [&] {
            const std::int64_t target = Corvane::Com::offsetOf(position);
            Corvane::Com::startAsync(
                pCallback,
                Corvane::Com::named(
                    L"CBaseStream::SeekAndWriteAsync",
                    [stream = stream_, target, bytes = Corvane::Com::bytesOf(pData), offset, count] {
                        stream->seekAndWrite(target, Corvane::Stream::part(*bytes, offset, count));
                    }));
        });
    }

protected:
    ~CBaseStream() override = default;

private:
    const Corvane::Com::SharedStream stream_;
};
