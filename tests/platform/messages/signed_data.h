// SignedData (RFC 5652, 5.1), apart from its content.
#pragma once

#include "layout.h"

#include <vector>

namespace Corvane::Platform::Messages {

struct SignedParts {
    std::vector<AlgorithmId> digests;
    std::string contentType = Oid::data;
    std::vector<Bytes> certificates, crls, signers;

    void addDigest(const AlgorithmId& algorithm);
    Layout::Parts before() const;
    Bytes after() const;
};

}  // namespace Corvane::Platform::Messages
