// What scripts are told about a certificate in JSON.
#pragma once

#include "crypto/certificate/certificate.h"

#include <string>
#include <vector>

namespace Corvane::Crypto {

// Names, thumbprint, serial number and validity: "CN", "Hash", "SerialNumber", "IssuerCN", "ValidFrom",
// "ValidTo", "SN", "ON", "UN", "RN", "WRO", all of them strings; bytes are hexadecimal in upper case.
std::wstring getCertDescriptionJson(const Certificate& certificate);

// The container of the private key: "containerName", "providerName", "providerType".
// Throws CryptoException E_CERT_PROPERTY where no key is attached.
std::wstring getContainerInfoJson(const Certificate& certificate);

// The names of the bits of a chain's error status (Certificate::verify), the system's own.
std::vector<std::string> getTrustStatusNames(DWORD status);

}  // namespace Corvane::Crypto
