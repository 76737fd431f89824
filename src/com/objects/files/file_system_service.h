// FileSystemService: opens files, and works on files and folders by their paths.
#pragma once

#include "com/access/service_object.h"

#include <VetrelCorvane2_h.h>

class CFileSystemService final
    : public Corvane::Com::ServiceObject<CFileSystemService, FileSystemService, IFileSystemService> {
public:
#include <methods/IFileSystemService.h>
};
