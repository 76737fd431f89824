// BinaryStream: a stream in memory.
#pragma once

#include "com/objects/binary/base_stream.h"
#include "stream/memory_stream.h"

class CBinaryStream final : public Corvane::Com::CBaseStream<CBinaryStream, BinaryStream, ::IBinaryStream> {
public:
    // What a page makes itself: it belongs to the page of its site.
    CBinaryStream() : CBaseStream(std::make_shared<Corvane::Stream::MemoryStream>()) {}
    explicit CBinaryStream(Corvane::Com::SharedAccess access)
        : CBaseStream(std::make_shared<Corvane::Stream::MemoryStream>(), std::move(access)) {}
};
