// Extensions of a certificate, and their values, read from arbitrary bytes.
#include "asn1/decoders/x509_extensions.h"
#include "fuzz.h"

namespace {

template <class Action>
void tolerate(Action&& action) {
    try {
        action();
    } catch (const asn1::Asn1Exception&) {
        // Not what was asked for.
    }
}

}  // namespace

void fuzz(Input input) {
    for (const auto read : {asn1::readKeyUsages, asn1::readExtendedKeyUsages, asn1::readPolicies})
        tolerate([&] { read(input); });
    tolerate([&] {
        for (const asn1::Extension& extension : asn1::readExtensions(input))
            asn1::readKeyUsages(extension.value);
    });
}
