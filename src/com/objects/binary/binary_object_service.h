// BinaryObjectService: makes BinaryObjects from text and files.
#pragma once

#include "com/access/service_object.h"

#include <VetrelCorvane2_h.h>

class CBinaryObjectService final
    : public Corvane::Com::ServiceObject<CBinaryObjectService, BinaryObjectService, IBinaryObjectService> {
public:
#include <methods/IBinaryObjectService.h>
};
