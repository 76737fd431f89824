#include "core/log.h"
#include "core/two_pass.h"
#include "core/wide_text.h"
#include "crypto/api/encoding.h"
#include "crypto/api/message_size.h"
#include "crypto/message/crypto_api_provider.h"
#include "crypto/message/message_feed.h"
#include "stream/output_range.h"

#include <algorithm>
#include <iterator>
#include <ostream>
#include <string>
#include <vector>

namespace Corvane {
namespace {

CryptProvider acquireProvider(const ProviderRecord& record) {
    CryptProvider provider;
    checkCrypto(::CryptAcquireContextW(provider.put(), nullptr, record.name.c_str(), record.type,
                                       CRYPT_VERIFYCONTEXT),
                E_CRYPTO_PROVIDER, L"CryptAcquireContextW");
    return provider;
}

// Each recipient by itself, for the log.
struct Each {
    const Certificates& recipients;

    friend std::wostream& operator<<(std::wostream& out, const Each& each) {
        for (const SharedCertificate& recipient : each.recipients)
            out << L", certificate: " << *recipient;
        return out;
    }
};

// The system would make a message that nobody can open.
void expectRecipients(const Certificates& recipients) {
    if (recipients.empty())
        failCrypto(E_CRYPTO_ENCRYPT, L"recipients", ERROR_INVALID_PARAMETER);
}

}  // namespace

Bytes CryptoApiProvider::encrypt(const Bytes& data, const Certificates& recipients) const {
    writeLog(LogLevel::debug, L"Corvane::CryptoApiProvider::encrypt", L"provider name: ", record_.name,
             Each{recipients}, L", data size: ", data.size());
    expectRecipients(recipients);
    const DWORD size = detail::messageSize(data);
    const CryptProvider provider = acquireProvider(record_);
    std::vector<PCCERT_CONTEXT> contexts;
    std::ranges::transform(recipients, std::back_inserter(contexts),
                           [](const SharedCertificate& one) { return one->context(); });
    std::string cipher = toUtf8(record_.cipher);

    CRYPT_ENCRYPT_MESSAGE_PARA parameters{};
    parameters.cbSize = sizeof(parameters);
    parameters.dwMsgEncodingType = messageEncoding;
    parameters.hCryptProv = provider.get();
    parameters.ContentEncryptionAlgorithm.pszObjId = cipher.data();
    return twoPass<BYTE>(E_CRYPTO_ENCRYPT, L"CryptEncryptMessage", [&](BYTE* buffer, DWORD* encrypted) {
        return ::CryptEncryptMessage(&parameters, static_cast<DWORD>(contexts.size()), contexts.data(),
                                     data.data(), size, buffer, encrypted);
    });
}

void CryptoApiProvider::encrypt(Stream::IBinaryStream& input, Stream::IBinaryStream& output,
                                const Certificates& recipients, const SharedProgress& progress) const {
    writeLog(LogLevel::debug, L"Corvane::CryptoApiProvider::encrypt", L"provider name: ", record_.name,
             Each{recipients}, L", input size: ", input.state().size, L", input position: ",
             input.state().position);
    expectRecipients(recipients);
    const CryptProvider provider = acquireProvider(record_);
    std::vector<CERT_INFO*> infos;
    std::ranges::transform(recipients, std::back_inserter(infos),
                           [](const SharedCertificate& one) { return one->context()->pCertInfo; });
    std::string cipher = toUtf8(record_.cipher);

    CMSG_ENVELOPED_ENCODE_INFO info{};
    info.cbSize = sizeof(info);
    info.hCryptProv = provider.get();
    info.ContentEncryptionAlgorithm.pszObjId = cipher.data();
    info.cRecipients = static_cast<DWORD>(infos.size());
    info.rgpRecipients = infos.data();

    Stream::expectSeparate(input, output, E_CRYPTO_ENCRYPT);
    Stream::OutputRange range(output);
    detail::MessageContent content(input, detail::MessageContent::largestPadded);
    {
        auto message = detail::CryptMessage::openToEncode(0, CMSG_ENVELOPED, &info, content.announcedSize(),
                                                          range.sink());
        content.feed(message, progress);
    }
    range.commit();
}

}  // namespace Corvane
