// About: what the component is, and whether the page may use it.
#pragma once

#include "com/access/service_object.h"

#include <VetrelCorvane2_h.h>

class CAbout final : public Corvane::Com::ServiceObject<CAbout, About, IAbout> {
public:
#include <methods/IAbout.h>
};
