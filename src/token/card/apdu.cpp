#include "token/card/apdu.h"

namespace Corvane {

Bytes Apdu::serialize() const {
    Bytes bytes{cla, ins, p1, p2};
    if (!data.empty()) {
        bytes.push_back(static_cast<std::uint8_t>(data.size()));
        bytes.insert(bytes.end(), data.begin(), data.end());
    }
    bytes.push_back(le);
    return bytes;
}

}  // namespace Corvane
