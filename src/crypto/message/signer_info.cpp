#include "crypto/message/signer_info.h"

#include "core/wide_text.h"

#include <algorithm>
#include <iterator>

namespace Corvane::detail {

IncludedCertificates::IncludedCertificates(const Certificate& signer, bool addCertChain) {
    if (addCertChain)
        certificates_ = signer.getCertificateChain();
    else
        certificates_.push_back(std::make_shared<Certificate>(signer));
}

std::vector<PCCERT_CONTEXT> IncludedCertificates::contexts() const {
    std::vector<PCCERT_CONTEXT> contexts;
    std::ranges::transform(certificates_, std::back_inserter(contexts),
                           [](const SharedCertificate& one) { return one->context(); });
    return contexts;
}

std::vector<CRYPT_DATA_BLOB> IncludedCertificates::blobs() const {
    std::vector<CRYPT_DATA_BLOB> blobs;
    std::ranges::transform(certificates_, std::back_inserter(blobs), [](const SharedCertificate& one) {
        return CRYPT_DATA_BLOB{one->context()->cbCertEncoded, one->context()->pbCertEncoded};
    });
    return blobs;
}

SignerInfo::SignerInfo(const ProviderRecord& record, const Certificate& certificate, const PrivateKey& key)
    : hash_(toUtf8(record.hash)) {
    info_.cbSize = sizeof(info_);
    info_.pCertInfo = certificate.context()->pCertInfo;
    info_.hCryptProv = key.handle();
    info_.dwKeySpec = key.spec();
    info_.HashAlgorithm.pszObjId = hash_.data();
}

}  // namespace Corvane::detail
