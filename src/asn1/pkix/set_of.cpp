#include "asn1/pkix/set_of.h"

#include <algorithm>

namespace asn1 {

std::vector<Bytes> readSetOf(BerReader& reader) {
    std::vector<Bytes> values;
    for (BerReader set = reader.enter(tag::set); !set.atEnd();) {
        const View value = set.readWhole();
        values.emplace_back(value.begin(), value.end());
    }
    if (!std::ranges::is_sorted(values))
        throw Asn1Exception("DER: a SET OF that is not in order (X.690 11.6)");
    return values;
}

}  // namespace asn1
