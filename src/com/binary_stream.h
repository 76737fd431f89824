// BinaryStream: a stream in memory.
#pragma once

#include "com/base_stream.h"
#include "stream/memory_stream.h"

class CBinaryStream final : public CBaseStream<CBinaryStream, BinaryStream, ::IBinaryStream> {
public:
    CBinaryStream() : CBaseStream(std::make_shared<Corvane::Stream::MemoryStream>()) {}
};
