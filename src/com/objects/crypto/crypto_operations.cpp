#include "com/objects/crypto/crypto_operations.h"

#include "com/async/async.h"
#include "com/async/operation_token.h"
#include "com/objects/binary/base_stream.h"
#include "com/objects/binary/binary_object.h"
#include "com/objects/crypto/certificate_arguments.h"
#include "com/objects/crypto/certificate_collection.h"
#include "com/objects/crypto/certificate_object.h"
#include "com/objects/crypto/crypto_provider.h"
#include "com/objects/crypto/crypto_service.h"
#include "com/runtime/arguments.h"
#include "crypto/message/inspect.h"

using namespace Corvane;
using namespace Corvane::Com;

// The operations, each written once for both coclasses and, where there are two, both forms. A provider is
// chosen where the work is done, since that may take its time.
namespace {

using Crypto::ProviderChoice;

auto signing(const ProviderChoice& choice, IBinaryObject* data, ICertificate* signer, bool attached,
             VARIANT_BOOL addCertChain) {
    return Operation{L"Corvane::CryptoApiProvider::sign",
                     [choice, bytes = bytesOf(data), certificate = certificateOf(signer), attached,
                      chain = addCertChain != VARIANT_FALSE] {
                         return choice.forKey(*certificate)->sign(*bytes, *certificate, attached, chain);
                     }};
}

auto signing(const ProviderChoice& choice, ::IBinaryStream* input, ::IBinaryStream* output,
             ICertificate* signer, VARIANT_BOOL attached, const VARIANT& token, VARIANT_BOOL addCertChain) {
    return Operation{L"Corvane::CryptoApiProvider::sign",
                     [choice, from = streamOf(input), to = streamOf(output),
                      certificate = certificateOf(signer), inside = attached != VARIANT_FALSE,
                      progress = progressOf(token), chain = addCertChain != VARIANT_FALSE] {
                         choice.forKey(*certificate)->sign(*from, *to, *certificate, inside, chain, progress);
                     }};
}

auto verifying(const ProviderChoice& choice, IBinaryObject* signature, SharedBytes data,
               const VARIANT& certificates) {
    return Operation{L"Corvane::CryptoApiProvider::verifyMessageSignature",
                     [choice, message = bytesOf(signature), data = std::move(data),
                      supplied = certificatesOf(certificates)] {
                         return choice.forNoKey()->verifyMessageSignature(*message, data.get(), supplied);
                     }};
}

auto verifyingStream(const ProviderChoice& choice, ::IBinaryStream* data, IBinaryObject* signature,
                     const VARIANT& token, const VARIANT& certificates) {
    return Operation{L"Corvane::CryptoApiProvider::verifyMessageSignature",
                     [choice, stream = streamOf(data), message = bytesOf(signature),
                      progress = progressOf(token), supplied = certificatesOf(certificates)] {
                         return choice.forNoKey()->verifyMessageSignature(*message, *stream, supplied,
                                                                          progress);
                     }};
}

auto verifyingStream(const ProviderChoice& choice, ::IBinaryStream* signature, const VARIANT& token,
                     const VARIANT& certificates) {
    return Operation{L"Corvane::CryptoApiProvider::verifyMessageSignature",
                     [choice, stream = streamOf(signature), progress = progressOf(token),
                      supplied = certificatesOf(certificates)] {
                         return choice.forNoKey()->verifyMessageSignature(*stream, supplied, progress);
                     }};
}

auto inspecting(::IBinaryStream* input, SharedBytes signature, const VARIANT& token,
                const VARIANT& certificates, long flags) {
    return Operation{
        L"Corvane::Crypto::inspectSignature",
        [stream = streamOf(input), signature = std::move(signature), progress = progressOf(token),
         supplied = certificatesOf(certificates), bits = static_cast<DWORD>(flags)] {
            return signature ? Crypto::inspectSignature(*signature, *stream, supplied, bits, progress)
                             : Crypto::inspectSignature(*stream, supplied, bits, progress);
        }};
}

auto encrypting(const ProviderChoice& choice, IBinaryObject* data, const VARIANT& recipients) {
    return Operation{L"Corvane::CryptoApiProvider::encrypt",
                     [choice, bytes = bytesOf(data), to = certificatesOf(recipients)] {
                         return choice.forRecipients(to)->encrypt(*bytes, to);
                     }};
}

auto decrypting(const ProviderChoice& choice, IBinaryObject* message) {
    return Operation{L"Corvane::CryptoApiProvider::decrypt",
                     [choice, bytes = bytesOf(message)] { return choice.forNoKey()->decrypt(*bytes); }};
}

}  // namespace

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::Sign(IBinaryObject* pData, ICertificate* pCertificate,
                                                       VARIANT_BOOL addCertChain, IBinaryObject** signature) {
    return this->serviceFrame(methodName<T, L"Sign">(), [&] {
        run(signature, signing(choice_, pData, pCertificate, false, addCertChain));
    });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::SignAsync(IBinaryObject* pData, ICertificate* pCertificate,
                                                            IDispatch* pCallback, VARIANT_BOOL addCertChain) {
    return this->serviceFrame(methodName<T, L"SignAsync">(), [&] {
        start(pCallback, signing(choice_, pData, pCertificate, false, addCertChain));
    });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::AttachedSign(IBinaryObject* pData,
                                                               ICertificate* pCertificate,
                                                               VARIANT_BOOL addCertChain,
                                                               IBinaryObject** signature) {
    return this->serviceFrame(methodName<T, L"AttachedSign">(), [&] {
        run(signature, signing(choice_, pData, pCertificate, true, addCertChain));
    });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::AttachedSignAsync(IBinaryObject* pData,
                                                                    ICertificate* pCertificate,
                                                                    IDispatch* pCallback,
                                                                    VARIANT_BOOL addCertChain) {
    return this->serviceFrame(methodName<T, L"AttachedSignAsync">(), [&] {
        start(pCallback, signing(choice_, pData, pCertificate, true, addCertChain));
    });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::SignStreamAsync(::IBinaryStream* input,
                                                                  ::IBinaryStream* output,
                                                                  ICertificate* pCertificate,
                                                                  VARIANT_BOOL attached, IDispatch* pCallback,
                                                                  VARIANT token, VARIANT_BOOL addCertChain) {
    return this->serviceFrame(methodName<T, L"SignStreamAsync">(), [&] {
        start(pCallback, signing(choice_, input, output, pCertificate, attached, token, addCertChain));
    });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::RawSign(IBinaryObject* pData, ICertificate* pCertificate,
                                                          IBinaryObject** signature) {
    return this->serviceFrame(methodName<T, L"RawSign">(), [&] {
        const SharedBytes bytes = bytesOf(pData);
        const SharedCertificate certificate = certificateOf(pCertificate);
        give(signature, makeBinary(choice_.forKey(*certificate)->rawSign(*bytes, *certificate)));
    });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::AddSignerToSignature(IBinaryObject* signature,
                                                                       VARIANT pData,
                                                                       ICertificate* pCertificate,
                                                                       VARIANT_BOOL addCertChain,
                                                                       IBinaryObject** result) {
    return this->serviceFrame(methodName<T, L"AddSignerToSignature">(), [&] {
        const SharedBytes message = bytesOf(signature);
        const SharedBytes data = optionalBytesOf(pData);
        const SharedCertificate certificate = certificateOf(pCertificate);
        give(result, makeBinary(choice_.forKey(*certificate)
                                    ->addSignerToSignature(*message, data.get(), *certificate,
                                                           addCertChain != VARIANT_FALSE)));
    });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::VerifySignature(IBinaryObject* pData,
                                                                  IBinaryObject* signature,
                                                                  VARIANT certificates,
                                                                  ICertificateCollection** signers) {
    return this->serviceFrame(methodName<T, L"VerifySignature">(), [&] {
        run(signers, verifying(choice_, signature, bytesOf(pData), certificates));
    });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::VerifySignatureAsync(IBinaryObject* pData,
                                                                       IBinaryObject* signature,
                                                                       IDispatch* pCallback,
                                                                       VARIANT certificates) {
    return this->serviceFrame(methodName<T, L"VerifySignatureAsync">(), [&] {
        start(pCallback, verifying(choice_, signature, bytesOf(pData), certificates));
    });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::VerifyAttachedSignature(IBinaryObject* pSignature,
                                                                          VARIANT certificates,
                                                                          ICertificateCollection** signers) {
    return this->serviceFrame(methodName<T, L"VerifyAttachedSignature">(),
                              [&] { run(signers, verifying(choice_, pSignature, nullptr, certificates)); });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::VerifyAttachedSignatureAsync(IBinaryObject* signature,
                                                                               IDispatch* pCallback,
                                                                               VARIANT certificates) {
    return this->serviceFrame(methodName<T, L"VerifyAttachedSignatureAsync">(), [&] {
        start(pCallback, verifying(choice_, signature, nullptr, certificates));
    });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::VerifyStreamSignatureAsync(::IBinaryStream* input,
                                                                             IBinaryObject* signature,
                                                                             IDispatch* pCallback,
                                                                             VARIANT token,
                                                                             VARIANT certificates) {
    return this->serviceFrame(methodName<T, L"VerifyStreamSignatureAsync">(), [&] {
        start(pCallback, verifyingStream(choice_, input, signature, token, certificates));
    });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::VerifyStreamAttachedSignatureAsync(::IBinaryStream* input,
                                                                                     IDispatch* pCallback,
                                                                                     VARIANT token,
                                                                                     VARIANT certificates) {
    return this->serviceFrame(methodName<T, L"VerifyStreamAttachedSignatureAsync">(), [&] {
        start(pCallback, verifyingStream(choice_, input, token, certificates));
    });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::GetCertificatesFromSignature(
    IBinaryObject* signature, ICertificateCollection** certificates) {
    return this->serviceFrame(methodName<T, L"GetCertificatesFromSignature">(), [&] {
        const SharedBytes message = bytesOf(signature);
        give(certificates, makeCollection(choice_.forNoKey()->getCertificatesFromSignature(*message)));
    });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::GetContentFromSignature(IBinaryObject* signature,
                                                                          IBinaryObject** content) {
    return this->serviceFrame(methodName<T, L"GetContentFromSignature">(), [&] {
        const SharedBytes message = bytesOf(signature);
        give(content, makeBinary(choice_.forNoKey()->getContentFromSignature(*message)));
    });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::ExtractCertificatesFromSignature(::IBinaryStream* input,
                                                                                   IDispatch* pCallback,
                                                                                   VARIANT token) {
    return this->serviceFrame(methodName<T, L"ExtractCertificatesFromSignature">(), [&] {
        start(pCallback, Operation{L"Corvane::CryptoApiProvider::extractCertificatesFromSignature",
                                   [choice = choice_, from = streamOf(input), progress = progressOf(token)] {
                                       return choice.forNoKey()->extractCertificatesFromSignature(*from,
                                                                                                  progress);
                                   }});
    });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::ExtractContentFromSignature(::IBinaryStream* input,
                                                                              ::IBinaryStream* output,
                                                                              IDispatch* pCallback,
                                                                              VARIANT token) {
    return this->serviceFrame(methodName<T, L"ExtractContentFromSignature">(), [&] {
        start(pCallback, Operation{L"Corvane::CryptoApiProvider::extractContentFromSignature",
                                   [choice = choice_, from = streamOf(input), to = streamOf(output),
                                    progress = progressOf(token)] {
                                       choice.forNoKey()->extractContentFromSignature(*from, *to, progress);
                                   }});
    });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::InspectSignature(IBinaryObject* signature, VARIANT pData,
                                                                   VARIANT certificates, LONG flags,
                                                                   BSTR* report) {
    return this->serviceFrame(methodName<T, L"InspectSignature">(), [&] {
        const SharedBytes message = bytesOf(signature);
        const SharedBytes data = optionalBytesOf(pData);
        const Certificates supplied = certificatesOf(certificates);
        give(report, Crypto::inspectSignature(*message, data.get(), supplied, static_cast<DWORD>(flags)));
    });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::InspectStreamSignatureAsync(
    ::IBinaryStream* input, VARIANT signature, IDispatch* pCallback, VARIANT token, VARIANT certificates,
    LONG flags) {
    return this->serviceFrame(methodName<T, L"InspectStreamSignatureAsync">(), [&] {
        start(pCallback, inspecting(input, optionalBytesOf(signature), token, certificates, flags));
    });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::Encrypt(IBinaryObject* pData, VARIANT recipients,
                                                          IBinaryObject** message) {
    return this->serviceFrame(methodName<T, L"Encrypt">(),
                              [&] { run(message, encrypting(choice_, pData, recipients)); });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::EncryptAsync(IBinaryObject* pData, VARIANT recipients,
                                                               IDispatch* pCallback) {
    return this->serviceFrame(methodName<T, L"EncryptAsync">(),
                              [&] { start(pCallback, encrypting(choice_, pData, recipients)); });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::EncryptStreamAsync(::IBinaryStream* input,
                                                                     ::IBinaryStream* output,
                                                                     VARIANT recipients, IDispatch* pCallback,
                                                                     VARIANT token) {
    return this->serviceFrame(methodName<T, L"EncryptStreamAsync">(), [&] {
        start(pCallback, Operation{L"Corvane::CryptoApiProvider::encrypt",
                                   [choice = choice_, from = streamOf(input), to = streamOf(output),
                                    whom = certificatesOf(recipients), progress = progressOf(token)] {
                                       choice.forRecipients(whom)->encrypt(*from, *to, whom, progress);
                                   }});
    });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::Decrypt(IBinaryObject* pMessage, IBinaryObject** content) {
    return this->serviceFrame(methodName<T, L"Decrypt">(),
                              [&] { run(content, decrypting(choice_, pMessage)); });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::DecryptAsync(IBinaryObject* pMessage,
                                                               IDispatch* pCallback) {
    return this->serviceFrame(methodName<T, L"DecryptAsync">(),
                              [&] { start(pCallback, decrypting(choice_, pMessage)); });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::DecryptStreamAsync(::IBinaryStream* input,
                                                                     ::IBinaryStream* output,
                                                                     IDispatch* pCallback, VARIANT token) {
    return this->serviceFrame(methodName<T, L"DecryptStreamAsync">(), [&] {
        start(pCallback, Operation{L"Corvane::CryptoApiProvider::decrypt",
                                   [choice = choice_, from = streamOf(input), to = streamOf(output),
                                    progress = progressOf(token)] {
                                       choice.forNoKey()->decrypt(*from, *to, progress);
                                   }});
    });
}

template class CCryptoOperations<CCryptoService, CryptoService, ICryptoService>;
template class CCryptoOperations<CCryptoProvider, CryptoProvider, ICryptoProvider>;
