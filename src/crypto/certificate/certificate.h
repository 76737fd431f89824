// The component's one representation of an X.509 certificate: a CryptoAPI certificate context.
#pragma once

#include "binary/bytes.h"
#include "core/handles.h"

#include <array>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Corvane {

class Certificate;

// How certificates are kept in lists and handed between the layers.
using SharedCertificate = std::shared_ptr<Certificate>;
using Certificates = std::vector<SharedCertificate>;

// Copies share the context, and the last owner frees it. The context keeps its link to the store it came
// from. Nothing of it changes but the archive flag, so any thread may read it.
//
// What reads text or properties throws CryptoException E_CERT_PROPERTY where nothing else is said.
class Certificate {
public:
    // Takes the context over; it must not be null unless it is replaced before anything is asked.
    explicit Certificate(CertificateContext context) noexcept : context_(std::move(context)) {}
    Certificate(Certificate&&) noexcept = default;
    Certificate& operator=(Certificate&&) noexcept = default;
    Certificate(const Certificate& other) noexcept : Certificate(duplicate(other.context())) {}
    Certificate& operator=(const Certificate& other) noexcept { return *this = Certificate(other); }
    ~Certificate() = default;

    // Shares a context that somebody else owns, as CryptoAPI counts references.
    static Certificate duplicate(PCCERT_CONTEXT context) noexcept;

    // A certificate from Base64 text with or without a PEM header; bytes that begin with 0x1E go to the
    // system as they are. DER begins with 0x30 and so is taken for text, on purpose: callers pass text.
    // Throws std::out_of_range for no bytes, CryptoException E_CRYPTO_PEM_TO_BYTES where they are not
    // Base64, E_CERT_INVALID where they are no certificate.
    static Certificate create(const Bytes& bytes);

    // Gives the context away; nothing else may be asked afterwards.
    CertificateContext detach() noexcept { return std::move(context_); }

    // Valid as long as this object or a copy of it lives.
    PCCERT_CONTEXT context() const noexcept { return context_.get(); }

    // CertGetNameStringW: `typeParameter` is what the type asks for (an object identifier or nothing).
    std::wstring getValue(DWORD type, DWORD flags, const void* typeParameter) const;
    // The simple display name.
    std::wstring getName(bool forIssuer) const;
    // The attribute of a name by its dotted identifier; empty where the name has none.
    std::wstring getSubjectAttribute(const std::string& oid) const;
    std::wstring getRdnValue(const std::string& oid, bool forIssuer) const;
    // The whole name as text; `flags` are CertNameToStrW's string types.
    std::wstring getSubject(DWORD flags) const;
    std::wstring getIssuer(DWORD flags) const;

    // Whether a private key is attached by name; the key itself is not opened.
    bool hasPrivateKey() const;
    bool getArchived() const;
    // Writes the flag into the context and so into its store. Throws CryptoException E_CERT_SET_PROPERTY.
    void setArchived(bool archived);

    // The SHA-1 thumbprint, 20 bytes. Throws CryptoException E_CERT_HASH.
    Bytes getHash() const;
    // The same question without a log line, for searches.
    bool hasHash(const Bytes& hash) const;
    Bytes getCertProperty(DWORD property) const;

    // Most significant byte first, as in the encoding.
    Bytes getSerialNumber() const;
    // The DER encoding.
    Bytes getContent() const;
    // In bits.
    DWORD getPublicKeyLength() const;
    // Dotted object identifier.
    std::wstring getPublicKeyAlgorithm() const;
    // Counted from 1.
    DWORD getVersion() const;
    // The validity, both ends included, in UTC.
    FILETIME getValidFrom() const { return info().NotBefore; }
    FILETIME getValidTo() const { return info().NotAfter; }

    // The address of the first OCSP responder that the certificate names; empty where it names none.
    // Throws CryptoException E_CERT_EXT_DECODE.
    std::wstring getOnlineCertificateStatusProtocol() const;

    // Removes the certificate from the store its context belongs to. Throws CryptoException E_CRYPTO.
    void uninstall();

    // The certificates from this one to the last the system finds, trusted or not.
    // Throws CryptoException E_CERT_GET_CHAIN.
    Certificates getCertificateChain() const;

    // Builds the chain as of now and returns its CERT_TRUST_... error bits; 0 is a complete, trusted chain.
    // `flags` (CERT_CHAIN_...) go to the system unchanged: without those that ask for it no revocation is
    // looked up. Throws CryptoException E_CERT_CHAIN where no chain can be built at all.
    DWORD verify(DWORD flags) const;
    // The same with certificates of `additional` for its links.
    DWORD verify(DWORD flags, HCERTSTORE additional) const;

private:
    const CERT_INFO& info() const noexcept { return *context()->pCertInfo; }
    bool hasProperty(DWORD property) const;
    using Sha1 = std::array<std::uint8_t, 20>;
    Sha1 readHash() const;

    CertificateContext context_;
};

// For the log: display name and thumbprint.
std::wostream& operator<<(std::wostream& out, const Certificate& certificate);
std::wostream& operator<<(std::wostream& out, const Certificates& certificates);

}  // namespace Corvane
