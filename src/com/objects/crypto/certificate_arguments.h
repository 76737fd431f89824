// A list of certificates as a script may pass it.
#pragma once

#include "crypto/certificate/certificate.h"

#include <windows.h>

#include <oaidl.h>

namespace Corvane::Com {

// Nothing (left out, undefined, null, Nothing), a Certificate, a CertificateCollection, or an array of
// Certificates: a SAFEARRAY, or an object with `length` and numbered members as JScript has them. Anything
// else fails with DISP_E_TYPEMISMATCH and no error information. For use inside a frame.
Certificates certificatesOf(const VARIANT& argument);

}  // namespace Corvane::Com
