// Makes and reads messages with the functions of crypt32 that the stand-in supplies, so that OpenSSL can
// judge them, and the other way round. `help` tells the commands.
#include "ber/ber.h"

#include <windows.h>

#define CMSG_SIGNER_ENCODE_INFO_HAS_CMS_FIELDS
#define CMSG_SIGNED_ENCODE_INFO_HAS_CMS_FIELDS
#define CMSG_ENVELOPED_ENCODE_INFO_HAS_CMS_FIELDS
#include <objbase.h>
#include <wincrypt.h>

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <map>
#include <sstream>

namespace {

using namespace Corvane::Platform;
using Words = std::vector<std::string>;

constexpr char help[] = R"(usage: msgtool STANDIN.dll <COMMANDS
Each line is a command, its words apart by tabs; each answer a line, "ok ..." or "error 0x...". STEP is the size of the pieces in which a stream
passes, 0: no stream. LENGTH: known, unknown. NAME: the common name of a certificate in "My". "-": none.
  sign     OUT CONTENT detached|attached plain|attributes STEP LENGTH NAME...
  simple   OUT CONTENT detached|attached NAME             CryptSignMessage
  cosign   OUT MESSAGE CONTENT|- NAME
  verify   MESSAGE CONTENT|- STEP OUT|-                   answers the signers' common names
  encrypt  OUT CONTENT CIPHER STEP LENGTH NAME...
  decrypt  OUT MESSAGE STEP NAME
  chain    NAME                                           answers the trust status
  issue    OUT REQUEST NAME                               as an authority with that key does: judges, and answers
)";

constexpr DWORD encoding = X509_ASN_ENCODING | PKCS_7_ASN_ENCODING;

struct Failed {
    DWORD code = ::GetLastError();
};

template <class Result>
Result must(Result result) {
    if (!result)
        throw Failed();
    return result;
}

Bytes read(const std::string& path) {
    std::FILE* const file = must(std::fopen(path.c_str(), "rb"));
    Bytes bytes;
    std::uint8_t block[1 << 16];
    for (std::size_t count = 0; (count = std::fread(block, 1, sizeof block, file)) > 0;)
        append(bytes, View(block, count));
    std::fclose(file);
    return bytes;
}

void write(const std::string& path, View bytes) {
    std::FILE* const file = must(std::fopen(path.c_str(), "wb"));
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
}

DWORD sizeOf(View bytes) {
    return static_cast<DWORD>(bytes.size());
}

std::string nameOf(PCCERT_CONTEXT certificate) {
    char name[256];
    ::CertGetNameStringA(certificate, CERT_NAME_SIMPLE_DISPLAY_TYPE, 0, nullptr, name, sizeof name);
    return name;
}

// The handles live as long as the program.
PCCERT_CONTEXT find(const std::string& name) {
    static const HCERTSTORE my =
        must(::CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, CERT_SYSTEM_STORE_CURRENT_USER, L"My"));
    PCCERT_CONTEXT found = nullptr;
    while ((found = ::CertEnumCertificatesInStore(my, found))) {
        if (nameOf(found) == name)
            return found;
    }
    ::SetLastError(static_cast<DWORD>(CRYPT_E_NOT_FOUND));
    throw Failed();
}

char* hashOf(PCCERT_CONTEXT certificate) {
    static const std::map<std::string, std::string> hashes = {{"1.2.643.2.2.19", "1.2.643.2.2.9"},
                                                              {"1.2.643.7.1.1.1.1", "1.2.643.7.1.1.2.2"},
                                                              {"1.2.643.7.1.1.1.2", "1.2.643.7.1.1.2.3"},
                                                              {szOID_RSA_RSA, "2.16.840.1.101.3.4.2.1"}};
    return const_cast<char*>(
        hashes.at(certificate->pCertInfo->SubjectPublicKeyInfo.Algorithm.pszObjId).c_str());
}

struct Key {
    explicit Key(PCCERT_CONTEXT certificate) {
        BOOL isOwned = FALSE;
        must(::CryptAcquireCertificatePrivateKey(certificate, 0, nullptr, &provider, &spec, &isOwned));
    }
    HCRYPTPROV provider = 0;
    DWORD spec = 0;
};

CMSG_SIGNER_ENCODE_INFO signerInfo(PCCERT_CONTEXT certificate, CRYPT_ATTRIBUTE* attribute) {
    const Key key(certificate);
    CMSG_SIGNER_ENCODE_INFO info{};
    info.cbSize = sizeof info;
    info.pCertInfo = certificate->pCertInfo;
    info.hCryptProv = key.provider;
    info.dwKeySpec = key.spec;
    info.HashAlgorithm.pszObjId = hashOf(certificate);
    info.cAuthAttr = attribute ? 1 : 0;
    info.rgAuthAttr = attribute;
    return info;
}

// What a stream's function got.
struct Output {
    Bytes bytes;
    int finals = 0;

    static BOOL WINAPI take(const void* output, BYTE* data, DWORD size, BOOL isFinal) {
        auto& self = *static_cast<Output*>(const_cast<void*>(output));
        append(self.bytes, View(data, size));
        self.finals += isFinal ? 1 : 0;
        return TRUE;
    }
    CMSG_STREAM_INFO stream(DWORD size) { return {size, take, this}; }
    void check() const {
        if (finals != 1)
            throw std::runtime_error("the function was told " + std::to_string(finals) +
                                     " times that it ends");
    }
};

class Message {
public:
    explicit Message(HCRYPTMSG handle) : handle_(must(handle)) {}
    ~Message() { ::CryptMsgClose(handle_); }
    Message(const Message&) = delete;
    Message& operator=(const Message&) = delete;

    void put(View bytes, bool isFinal) {
        must(::CryptMsgUpdate(handle_, bytes.data(), sizeOf(bytes), isFinal));
    }
    // In pieces, and an empty one at the end; `after` is called after each.
    template <class After>
    void put(View bytes, std::size_t step, After after) {
        for (; !bytes.empty(); bytes = bytes.subspan(std::min(step, bytes.size()))) {
            put(bytes.first(std::min(step, bytes.size())), false);
            after();
        }
        put({}, true);
    }
    Bytes get(DWORD type, DWORD index = 0) const {
        DWORD size = 0;
        must(::CryptMsgGetParam(handle_, type, index, nullptr, &size));
        Bytes bytes(size);
        must(::CryptMsgGetParam(handle_, type, index, bytes.data(), &size));
        bytes.resize(size);
        return bytes;
    }
    DWORD number(DWORD type) const { return *reinterpret_cast<const DWORD*>(get(type).data()); }
    void control(DWORD type, const void* argument) { must(::CryptMsgControl(handle_, 0, type, argument)); }
    HCRYPTMSG handle() const { return handle_; }

private:
    HCRYPTMSG handle_;
};

// Through a stream, or whole where the step is 0.
template <class Open>
Bytes made(View content, std::size_t step, const std::string& length, Open open) {
    if (step == 0) {
        Message message(open(nullptr));
        message.put(content, true);
        return message.get(CMSG_CONTENT_PARAM);
    }
    Output output;
    CMSG_STREAM_INFO stream = output.stream(length == "known" ? sizeOf(content) : CMSG_INDEFINITE_LENGTH);
    {
        Message message(open(&stream));
        message.put(content, step, [] {});
    }
    output.check();
    return output.bytes;
}

std::string sign(const Words& words) {
    static BYTE value[] = {0x13, 3, 'y', 'e', 's'};
    static CRYPT_DATA_BLOB values[] = {{sizeof value, value}};
    static char type[] = "1.2.3.4.5";
    CRYPT_ATTRIBUTE attribute{type, 1, values};
    std::vector<CMSG_SIGNER_ENCODE_INFO> signers;
    std::vector<CRYPT_DATA_BLOB> certificates;
    for (std::size_t i = 7; i < words.size(); ++i) {
        PCCERT_CONTEXT const one = find(words[i]);
        signers.push_back(signerInfo(one, words[4] == "attributes" ? &attribute : nullptr));
        certificates.push_back({one->cbCertEncoded, one->pbCertEncoded});
    }
    CMSG_SIGNED_ENCODE_INFO info{};
    info.cbSize = sizeof info;
    info.cSigners = static_cast<DWORD>(signers.size());
    info.rgSigners = signers.data();
    info.cCertEncoded = static_cast<DWORD>(certificates.size());
    info.rgCertEncoded = certificates.data();
    const DWORD flags = words[3] == "detached" ? CMSG_DETACHED_FLAG : 0;
    const Bytes content = read(words[2]);
    const Bytes message = made(content, std::stoul(words[5]), words[6], [&](CMSG_STREAM_INFO* stream) {
        return ::CryptMsgOpenToEncode(encoding, flags, CMSG_SIGNED, &info, nullptr, stream);
    });
    const DWORD size =
        ::CryptMsgCalculateEncodedLength(encoding, flags, CMSG_SIGNED, &info, nullptr, sizeOf(content));
    if (words[6] == "known" && size != message.size())
        throw std::runtime_error("another length was calculated");
    write(words[1], message);
    return "";
}

std::string simple(const Words& words) {
    PCCERT_CONTEXT certificate = find(words[4]);
    CRYPT_SIGN_MESSAGE_PARA how{};
    how.cbSize = sizeof how;
    how.dwMsgEncodingType = encoding;
    how.pSigningCert = certificate;
    how.HashAlgorithm.pszObjId = hashOf(certificate);
    how.cMsgCert = 1;
    how.rgpMsgCert = &certificate;
    const Bytes content = read(words[2]);
    const std::size_t half = content.size() / 2;
    const BYTE* data[] = {content.data(), content.data() + half};
    DWORD sizes[] = {static_cast<DWORD>(half), static_cast<DWORD>(content.size() - half)};
    DWORD size = 0;
    must(::CryptSignMessage(&how, words[3] == "detached", 2, data, sizes, nullptr, &size));
    Bytes message(size);
    must(::CryptSignMessage(&how, words[3] == "detached", 2, data, sizes, message.data(), &size));
    write(words[1], View(message).first(size));
    return "";
}

std::string cosign(const Words& words) {
    const bool isDetached = words[3] != "-";
    Message message(
        ::CryptMsgOpenToDecode(encoding, isDetached ? CMSG_DETACHED_FLAG : 0, 0, 0, nullptr, nullptr));
    message.put(read(words[2]), true);
    if (isDetached)
        message.put(read(words[3]), true);
    PCCERT_CONTEXT const certificate = find(words[4]);
    const CMSG_SIGNER_ENCODE_INFO signer = signerInfo(certificate, nullptr);
    message.control(CMSG_CTRL_ADD_SIGNER, &signer);
    const CRYPT_DATA_BLOB blob{certificate->cbCertEncoded, certificate->pbCertEncoded};
    message.control(CMSG_CTRL_ADD_CERT, &blob);
    write(words[1], message.get(CMSG_ENCODED_MESSAGE));
    return "";
}

std::string verifyWhole(const Bytes& message, const std::string& contentPath) {
    CRYPT_VERIFY_MESSAGE_PARA how{};
    how.cbSize = sizeof how;
    how.dwMsgAndCertEncodingType = encoding;
    std::string names;
    const LONG count = ::CryptGetMessageSignerCount(encoding, message.data(), sizeOf(message));
    must(count >= 0);
    for (LONG i = 0; i <= count; ++i) {
        PCCERT_CONTEXT signer = nullptr;
        BOOL isGood = FALSE;
        if (contentPath == "-") {
            isGood = ::CryptVerifyMessageSignature(&how, static_cast<DWORD>(i), message.data(),
                                                   sizeOf(message), nullptr, nullptr, &signer);
        } else {
            const Bytes content = read(contentPath);
            const BYTE* data[] = {content.data()};
            DWORD sizes[] = {sizeOf(content)};
            isGood = ::CryptVerifyDetachedMessageSignature(&how, static_cast<DWORD>(i), message.data(),
                                                           sizeOf(message), 1, data, sizes, &signer);
        }
        if (i == count && (isGood || ::GetLastError() != static_cast<DWORD>(CRYPT_E_NO_SIGNER)))
            throw std::runtime_error("the end of the signers is not told");
        if (i < count)
            names += ' ' + nameOf((must(isGood), must(signer)));
    }
    return names;
}

std::string verify(const Words& words) {
    const Bytes bytes = read(words[1]);
    const std::size_t step = std::stoul(words[3]);
    if (step == 0)
        return verifyWhole(bytes, words[2]);
    const bool isDetached = words[2] != "-";
    Output output;
    CMSG_STREAM_INFO stream = output.stream(CMSG_INDEFINITE_LENGTH);
    Message message(
        ::CryptMsgOpenToDecode(encoding, isDetached ? CMSG_DETACHED_FLAG : 0, 0, 0, nullptr, &stream));
    message.put(bytes, step, [] {});
    if (isDetached)
        message.put(read(words[2]), step, [] {});
    output.check();
    const HCERTSTORE store = must(::CertOpenStore(CERT_STORE_PROV_MSG, encoding, 0, 0, message.handle()));
    std::string names;
    for (DWORD i = 0; i < message.number(CMSG_SIGNER_COUNT_PARAM); ++i) {
        Bytes info = message.get(CMSG_SIGNER_CERT_INFO_PARAM, i);
        PCCERT_CONTEXT const signer = must(
            ::CertGetSubjectCertificateFromStore(store, encoding, reinterpret_cast<CERT_INFO*>(info.data())));
        CMSG_CTRL_VERIFY_SIGNATURE_EX_PARA how{};
        how.cbSize = sizeof how;
        how.dwSignerIndex = i;
        how.dwSignerType = CMSG_VERIFY_SIGNER_CERT;
        how.pvSigner = const_cast<CERT_CONTEXT*>(signer);
        message.control(CMSG_CTRL_VERIFY_SIGNATURE_EX, &how);
        names += ' ' + nameOf(signer);
    }
    if (words[4] != "-")
        write(words[4], output.bytes);
    return names;
}

std::string encrypt(const Words& words) {
    std::vector<CERT_INFO*> recipients;
    for (std::size_t i = 6; i < words.size(); ++i)
        recipients.push_back(find(words[i])->pCertInfo);
    const Key key(find(words[6]));
    std::string cipher = words[3];
    CMSG_ENVELOPED_ENCODE_INFO info{};
    info.cbSize = sizeof info;
    info.hCryptProv = key.provider;
    info.ContentEncryptionAlgorithm.pszObjId = cipher.data();
    info.cRecipients = static_cast<DWORD>(recipients.size());
    info.rgpRecipients = recipients.data();
    write(words[1], made(read(words[2]), std::stoul(words[4]), words[5], [&](CMSG_STREAM_INFO* stream) {
              return ::CryptMsgOpenToEncode(encoding, 0, CMSG_ENVELOPED, &info, nullptr, stream);
          }));
    return "";
}

// Tries each recipient whose name is the certificate's.
void openEnvelope(Message& message, PCCERT_CONTEXT certificate) {
    const DWORD count = message.number(CMSG_RECIPIENT_COUNT_PARAM);
    CMSG_CTRL_DECRYPT_PARA how{};
    how.cbSize = sizeof how;
    for (; how.dwRecipientIndex < count; ++how.dwRecipientIndex) {
        Bytes bytes = message.get(CMSG_RECIPIENT_INFO_PARAM, how.dwRecipientIndex);
        const auto& info = *reinterpret_cast<CERT_INFO*>(bytes.data());
        if (::CertCompareIntegerBlob(const_cast<CRYPT_INTEGER_BLOB*>(&info.SerialNumber),
                                     &certificate->pCertInfo->SerialNumber)) {
            const Key key(certificate);
            how.hCryptProv = key.provider;
            how.dwKeySpec = key.spec;
            return message.control(CMSG_CTRL_DECRYPT, &how);
        }
    }
    ::SetLastError(static_cast<DWORD>(CRYPT_E_RECIPIENT_NOT_FOUND));
    throw Failed();
}

std::string decrypt(const Words& words) {
    PCCERT_CONTEXT const certificate = find(words[4]);
    const Bytes bytes = read(words[2]);
    const std::size_t step = std::stoul(words[3]);
    Output output;
    CMSG_STREAM_INFO stream = output.stream(CMSG_INDEFINITE_LENGTH);
    Message message(::CryptMsgOpenToDecode(encoding, 0, 0, 0, nullptr, step ? &stream : nullptr));
    if (step == 0) {
        message.put(bytes, true);
        openEnvelope(message, certificate);
        write(words[1], message.get(CMSG_CONTENT_PARAM));
        return "";
    }
    bool isOpen = false;
    message.put(bytes, step, [&] {
        DWORD size = 0;
        if (!isOpen &&
            ::CryptMsgGetParam(message.handle(), CMSG_ENVELOPE_ALGORITHM_PARAM, 0, nullptr, &size)) {
            isOpen = true;
            openEnvelope(message, certificate);
        } else if (!isOpen && ::GetLastError() != static_cast<DWORD>(CRYPT_E_STREAM_MSG_NOT_READY)) {
            throw Failed();
        }
    });
    output.check();
    write(words[1], output.bytes);
    return "";
}

std::string chain(const Words& words) {
    CERT_CHAIN_PARA para{};
    para.cbSize = sizeof para;
    PCCERT_CHAIN_CONTEXT built = nullptr;
    must(::CertGetCertificateChain(nullptr, find(words[1]), nullptr, nullptr, &para, 0, nullptr, &built));
    const std::string status = std::to_string(built->TrustStatus.dwErrorStatus);
    ::CertFreeCertificateChain(built);
    return ' ' + status;
}

// The structure behind DER; it lives as long as the bytes.
template <class Structure>
Structure* decode(const char* type, View der, Bytes& memory) {
    DWORD size = 0;
    must(::CryptDecodeObject(encoding, type, der.data(), sizeOf(der), 0, nullptr, &size));
    memory.resize(size);
    must(::CryptDecodeObject(encoding, type, der.data(), sizeOf(der), 0, memory.data(), &size));
    return reinterpret_cast<Structure*>(memory.data());
}

// The extensions that a request's attributes ask for (RFC 2985, 5.4.2).
View wantedExtensions(Reader attributes) {
    while (!attributes.atEnd()) {
        Reader attribute = attributes.enter(Tag::sequence);
        if (oidText(attribute.next(Tag::oid).content) == "1.2.840.113549.1.9.14")
            return attribute.enter(Tag::set).next(Tag::sequence).whole;
    }
    throw std::runtime_error("the request asks for no extensions");
}

FILETIME inDays(int days) {
    FILETIME now{};
    ::GetSystemTimeAsFileTime(&now);
    ULARGE_INTEGER ticks{{now.dwLowDateTime, now.dwHighDateTime}};
    ticks.QuadPart += static_cast<ULONGLONG>(days * 864'000'000'000LL);
    return {ticks.LowPart, ticks.HighPart};
}

std::string issue(const Words& words) {
    Bytes request = read(words[2]);
    Reader fields = Reader(request).enter(Tag::sequence).enter(Tag::sequence);
    fields.next(Tag::integer);
    const View name = fields.next(Tag::sequence).whole;
    Bytes keyMemory;
    auto* const key =
        decode<CERT_PUBLIC_KEY_INFO>(X509_PUBLIC_KEY_INFO, fields.next(Tag::sequence).whole, keyMemory);
    CRYPT_DATA_BLOB whole{sizeOf(request), request.data()};
    must(::CryptVerifyCertificateSignatureEx(0, encoding, CRYPT_VERIFY_CERT_SIGN_SUBJECT_BLOB, &whole,
                                             CRYPT_VERIFY_CERT_SIGN_ISSUER_PUBKEY, key, 0, nullptr));
    Bytes extensionMemory;
    const auto* const extensions = decode<CERT_EXTENSIONS>(
        X509_EXTENSIONS, wantedExtensions(fields.enter(Tag::within(0))), extensionMemory);

    PCCERT_CONTEXT const authority = find(words[3]);
    const Key own(authority);
    CRYPT_ALGORITHM_IDENTIFIER algorithm = authority->pCertInfo->SignatureAlgorithm;
    GUID number{};
    must(::CoCreateGuid(&number) == S_OK);
    CERT_INFO info{};
    info.dwVersion = CERT_V3;
    info.SerialNumber = {8, reinterpret_cast<BYTE*>(&number)};
    info.SignatureAlgorithm = algorithm;
    info.Issuer = authority->pCertInfo->Subject;
    info.NotBefore = inDays(-1);
    info.NotAfter = inDays(30);
    info.Subject = {sizeOf(name), const_cast<BYTE*>(name.data())};
    info.SubjectPublicKeyInfo = *key;
    info.cExtension = extensions->cExtension;
    info.rgExtension = extensions->rgExtension;
    Bytes made(1 << 16);
    DWORD size = sizeOf(made);
    must(::CryptSignAndEncodeCertificate(own.provider, own.spec, encoding, X509_CERT_TO_BE_SIGNED, &info,
                                         &algorithm, nullptr, made.data(), &size));
    write(words[1], View(made).first(size));
    return "";
}

std::string answer(const std::string& line) {
    static const std::map<std::string, std::string (*)(const Words&)> commands = {
        {"sign", sign},       {"simple", simple},   {"cosign", cosign}, {"verify", verify},
        {"encrypt", encrypt}, {"decrypt", decrypt}, {"chain", chain},   {"issue", issue}};
    std::istringstream stream(line);
    Words words;
    for (std::string word; std::getline(stream, word, '\t');)
        words.push_back(word);
    try {
        return "ok" + commands.at(words.at(0))(words);
    } catch (const Failed& failed) {
        char text[32];
        std::snprintf(text, sizeof text, "error 0x%08lX", failed.code);
        return text;
    } catch (const std::exception& error) {
        return std::string("failed: ") + error.what();
    }
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2 || !::LoadLibraryA(arguments[1])) {
        std::cout << help;
        return 2;
    }
    for (std::string line; std::getline(std::cin, line);)
        std::cout << answer(line) << std::endl;
    return 0;
}
