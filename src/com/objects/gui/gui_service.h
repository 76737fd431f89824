// GuiService: the system's dialogs for files and folders.
#pragma once

#include "com/access/service_object.h"

#include <VetrelCorvane2_h.h>

class CGuiService final : public Corvane::Com::ServiceObject<CGuiService, GuiService, IGuiService> {
public:
#include <methods/IGuiService.h>
};
