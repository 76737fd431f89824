#include "signed_data.h"

#include <algorithm>

namespace Corvane::Platform::Messages {
namespace {

Bytes collection(std::uint8_t tag, const std::vector<Bytes>& elements, bool isOptional) {
    if (isOptional && elements.empty())
        return {};
    Bytes content;
    for (const Bytes& element : elements)
        append(content, element);
    return tlv(tag, content);
}

}  // namespace

void SignedParts::addDigest(const AlgorithmId& algorithm) {
    if (std::ranges::find(digests, algorithm.oid, &AlgorithmId::oid) == digests.end())
        digests.push_back(algorithm);
}

Layout::Parts SignedParts::before() const {
    std::vector<Bytes> algorithms;
    for (const AlgorithmId& digest : digests)
        algorithms.push_back(digest.parameters.empty()
                                 ? tlv(Tag::sequence, oid(digest.oid), Bytes{Tag::null, 0})
                                 : digest.der());
    Bytes head = integer(contentType != Oid::data ? 3 : 1);
    append(head, collection(Tag::set, algorithms, false));
    return {oid(Oid::signedData), head, oid(contentType)};
}

Bytes SignedParts::after() const {
    Bytes rest = collection(Tag::within(0), certificates, true);
    append(rest, collection(Tag::within(1), crls, true));
    return append(rest, collection(Tag::set, signers, false));
}

}  // namespace Corvane::Platform::Messages
