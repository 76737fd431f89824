// The authority and the reader of messages where OpenSSL has no GOST engine: by the functions of crypt32 that
// the stand-in supplies, in one piece, which is another way through them than the component's streams take.
#include "failure.h"

#include <objbase.h>

#include <fstream>
#include <iostream>
#include <iterator>
#include <map>

namespace {

using namespace Corvane::Platform;
using Words = std::vector<std::string>;

constexpr char help[] =
    R"(usage: msgtool STANDIN.dll COMMAND...     NAME is the common name of a certificate in "My"
  verify   MESSAGE CONTENT|-
  decrypt  OUT MESSAGE NAME
  issue    OUT REQUEST NAME         as an authority with that key does: judges, and answers
)";

constexpr DWORD encoding = X509_ASN_ENCODING | PKCS_7_ASN_ENCODING;

Bytes read(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("no file " + path);
    return {std::istreambuf_iterator<char>(file), {}};
}

void write(const std::string& path, View bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
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
    fail(CRYPT_E_NOT_FOUND);
}

struct Key {
    explicit Key(PCCERT_CONTEXT certificate) {
        BOOL isOwned = FALSE;
        must(::CryptAcquireCertificatePrivateKey(certificate, 0, nullptr, &provider, &spec, &isOwned));
    }
    HCRYPTPROV provider = 0;
    DWORD spec = 0;
};

void verify(const Words& words) {
    const Bytes message = read(words[1]);
    CRYPT_VERIFY_MESSAGE_PARA how{};
    how.cbSize = sizeof how;
    how.dwMsgAndCertEncodingType = encoding;
    const LONG count = ::CryptGetMessageSignerCount(encoding, message.data(), sizeOf(message));
    must(count > 0);
    for (LONG i = 0; i < count; ++i) {
        if (words[2] == "-") {
            must(::CryptVerifyMessageSignature(&how, static_cast<DWORD>(i), message.data(), sizeOf(message),
                                               nullptr, nullptr, nullptr));
            continue;
        }
        const Bytes content = read(words[2]);
        const BYTE* data[] = {content.data()};
        DWORD sizes[] = {sizeOf(content)};
        must(::CryptVerifyDetachedMessageSignature(&how, static_cast<DWORD>(i), message.data(),
                                                   sizeOf(message), 1, data, sizes, nullptr));
    }
}

void decrypt(const Words& words) {
    PCCERT_CONTEXT const certificate = find(words[3]);
    const Bytes bytes = read(words[2]);
    const HCRYPTMSG message = must(::CryptMsgOpenToDecode(encoding, 0, 0, 0, nullptr, nullptr));
    must(::CryptMsgUpdate(message, bytes.data(), sizeOf(bytes), TRUE));
    const auto get = [&](DWORD type, DWORD index = 0) {
        DWORD size = 0;
        must(::CryptMsgGetParam(message, type, index, nullptr, &size));
        Bytes value(size);
        must(::CryptMsgGetParam(message, type, index, value.data(), &size));
        return value;
    };
    const DWORD count = *reinterpret_cast<const DWORD*>(get(CMSG_CMS_RECIPIENT_COUNT_PARAM).data());
    CMSG_CTRL_KEY_TRANS_DECRYPT_PARA how{};
    how.cbSize = sizeof how;
    for (; how.dwRecipientIndex < count; ++how.dwRecipientIndex) {
        const Bytes recipient = get(CMSG_CMS_RECIPIENT_INFO_PARAM, how.dwRecipientIndex);
        how.pKeyTrans = reinterpret_cast<const CMSG_CMS_RECIPIENT_INFO*>(recipient.data())->pKeyTrans;
        if (!::CertCompareIntegerBlob(&how.pKeyTrans->RecipientId.IssuerSerialNumber.SerialNumber,
                                      &certificate->pCertInfo->SerialNumber))
            continue;
        const Key key(certificate);
        how.hCryptProv = key.provider;
        how.dwKeySpec = key.spec;
        must(::CryptMsgControl(message, 0, CMSG_CTRL_KEY_TRANS_DECRYPT, &how));
        return write(words[1], get(CMSG_CONTENT_PARAM));
    }
    fail(CRYPT_E_RECIPIENT_NOT_FOUND);
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

void issue(const Words& words) {
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
}

int run(const Words& words) {
    static const std::map<std::string, void (*)(const Words&)> commands = {
        {"verify", verify}, {"decrypt", decrypt}, {"issue", issue}};
    try {
        commands.at(words.at(0))(words);
        return 0;
    } catch (const Failure& failed) {
        std::cerr << "error 0x" << std::hex << failed.code << '\n';
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
    }
    return 1;
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 3 || !::LoadLibraryA(arguments[1])) {
        std::cout << help;
        return 2;
    }
    return run({arguments + 2, arguments + count});
}
