// About: what the component is, and whether the page may use it.
#pragma once

#include "com/access/browser_object.h"
#include "com/runtime/object.h"

#include <VetrelCorvane2_h.h>

class CAbout final : public Corvane::Com::Object<CAbout, About, IAbout, CBrowserObject<CAbout>> {
public:
#include <methods/IAbout.h>
};
