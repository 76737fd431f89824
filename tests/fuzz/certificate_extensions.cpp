// Extensions of a certificate, and their values, read from arbitrary bytes.
#include "asn1/certificate_extensions.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const asn1::View input(data, size);
    for (const auto read : {asn1::readKeyUsages, asn1::readExtendedKeyUsages, asn1::readPolicies}) {
        try {
            read(input);
        } catch (const asn1::Asn1Exception&) {
        }
    }
    try {
        for (const asn1::Extension& extension : asn1::readExtensions(input)) {
            asn1::readKeyUsages(extension.value);
        }
    } catch (const asn1::Asn1Exception&) {
    }
    return 0;
}
