// PKCS#11 2.20 as vendors' modules for Windows have it: structures packed to one byte, numbers of 32 bits.
#pragma once

#include <windows.h>

#include <p11-kit/pkcs11.h>

static_assert(sizeof(CK_ULONG) == 4 && sizeof(CK_ATTRIBUTE) == 2 * sizeof(CK_ULONG) + sizeof(void*));
