// CompressionService: zip and gzip, of bytes and of streams.
#pragma once

#include "com/access/service_object.h"

#include <VetrelCorvane2_h.h>

class CCompressionService final
    : public Corvane::Com::ServiceObject<CCompressionService, CompressionService, ICompressionService> {
public:
#include <methods/ICompressionService.h>
};
