// CryptoService: search for certificates, signing, verification.
#pragma once

#include "com/access/service_object.h"

#include <VetrelCorvane2_h.h>

class CCryptoService final
    : public Corvane::Com::ServiceObject<CCryptoService, CryptoService, ICryptoService> {
public:
#include <methods/ICryptoService.h>
};
