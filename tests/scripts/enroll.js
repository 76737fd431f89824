// The way from a key to a certificate for it, for enroll-test. arguments: the case, the name of the container, the folder with
// what is made and read
var service = create("CryptoService");
var provider = service.GetDefaultCryptoProvider();
var bytes = create("BinaryObjectService");
var container = WScript.Arguments(1);
var folder = WScript.Arguments(2) + "/";
var cases = {};

function load(name) {
    return bytes.BinaryObjectFromFile(folder + name);
}

// Makes keys and asks for certificates: request.der with path.txt, and plain.der.
cases.request = function () {
    var name = service.EncodeDistinguishedName('CN=Петров Пётр,O="ООО ""Ромашка""",SNILS=12345678901,INN=001234567890,C=RU');
    var extensions = service.EncodeExtensions(JSON.stringify({
        keyUsage: ["digitalSignature", "nonRepudiation"],
        extendedKeyUsage: ["clientAuth", "emailProtection"],
        policies: ["1.2.643.100.113.1"],
        subjectAltName: [{ email: "petr@example.org" }]
    }));
    var password = hex("3010" + "06092A864886F70D010907" + "31030C0161"); // challengePassword "a" (RFC 2985)

    var result = JSON.parse(service.CreateCertificationRequestExV2(container, 1, name, extensions, password, true, true));
    check(result.path.slice(-container.length - 1) === "\\" + container, result.path);
    check(!("token" in result), "a container in the registry lies on no token");
    var request = bytes.BinaryObjectFromBase64(result.request);
    request.ToFile(folder + "request.der");
    binaryOf(result.path).ToFile(folder + "path.txt");

    var told = JSON.parse(service.DecodeCertificationRequest(request));
    equalAll([
        ["subject", 'CN=Петров Пётр,O=ООО \\"Ромашка\\",SNILS=12345678901,INN=001234567890,C=RU', told.subject],
        ["signatureValid", true, told.signatureValid],
        ["publicKeyAlgorithm", "1.2.643.2.2.19", told.publicKeyAlgorithm],
        ["keyUsages", "digitalSignature,nonRepudiation", told.keyUsages.join()],
        ["attributes", 2, told.attributes.length],
        ["the password", "DAFh", told.attributes[1].values[0]]
    ]);
    var changed = request.ToHexString().replace("310B3009060355040613025255", "310B3009060355040613025553"); // the country
    var refused = JSON.parse(service.DecodeCertificationRequest(hex(changed)));
    equal(refused.signatureValid, false);
    check(!("signatureError" in refused));

    // The same by a provider of one's own choice, without extras; a key that may not leave.
    provider.CreateCertificationRequest(container + " plain", 1, name, extensions, 1, true).ToFile(folder + "plain.der");
    fails(function () { service.CreateCertificationRequest(container, 1, name, extensions, false, true); },
        "[301] Ошибка при получении криптопровайдера");
    fails(function () { service.EncodeDistinguishedName("CN=a,ИНЛ=1"); },
        "[614] Неверное имя субъекта (символ 6: неизвестный атрибут)");
    fails(function () { service.EncodeExtensions('{"keyUsage": []}'); }, "[615] ");
    fails(function () { service.DecodeCertificationRequest(name); }, "[616] ");
};

// Installs the answers, signs with the keys that they are for (signed.p7s), and takes the certificates away again.
cases.install = function () {
    var document = load("document");
    var path = textOf(load("path.txt"));
    var digits = load("answer.cer").ToHexString();
    var base64 = load("answer.cer").ToBase64();
    fails(function () { service.InstallCertificateResponse("31" + digits.substr(2), "My"); },
        "[324] Ошибка при получении содержимого объекта криптографии");
    fails(function () { service.InstallCertificateResponseEx(load("plain.cer").ToBase64(), path, "My"); },
        "[327] Контейнер не соответствует устанавливаемому сертификату");

    function signed(certificate) {
        equal(JSON.parse(certificate.GetContainerInfo()).containerName.slice(-container.length), container);
        var signature = service.Sign(document, certificate, false);
        equal(service.VerifySignature(document, signature).Item(0).CommonName, "Петров Пётр");
        return signature;
    }
    var certificate = service.InstallCertificateResponse(digits.toLowerCase(), "My");
    signed(certificate).ToFile(folder + "signed.p7s");
    certificate.Uninstall();
    var pem = "-----BEGIN CERTIFICATE-----\n" + base64 + "\n-----END CERTIFICATE-----\n";
    service.InstallCertificateResponseEx(pem, path, "My").Uninstall();
    certificate = provider.InstallCertificateResponseEx(base64, path, "My");
    signed(certificate);

    // A key that may leave is copied; one that may not, stays.
    provider.CopyKeyContainer(certificate, container + " copy");
    var copied = provider.InstallCertificateResponseEx(digits, container + " copy", "My");
    service.VerifySignature(document, service.Sign(document, copied, false));
    fails(function () { provider.CopyKeyContainer(certificate, container + " copy"); }, "[301] ");
    var kept = service.InstallCertificateResponse(load("plain.cer").ToBase64(), "My");
    fails(function () { provider.CopyKeyContainer(kept, container + " none"); }, "[322] Ошибка при экспортировании ключа");
    fails(function () { provider.InstallCertificateResponseEx(digits, container + " none", "My"); }, "[301] ");

    // The objects that Windows has for it answer with what they were asked (tests/platform/enroll).
    function steps(isPkcs7) {
        var lines = service.GenerateCertificateRenewalRequest(isPkcs7, certificate).split("\n").slice(0, -1);
        return lines.join().replace(/\([^)]*\)/g, "").replace(/=[^,]*/g, "");
    }
    var common = "new pkcs10,pkcs10.InitializeFromCertificate,pkcs10.PrivateKey,key.ProviderName,key.KeySpec,";
    equal(steps(false), common + "pkcs10.Encode,pkcs10.RawData");
    equal(steps(true), common + "new pkcs7,pkcs7.InitializeFromInnerRequest,new signer,signer.Initialize,pkcs7.SignerCertificate," +
        "pkcs7.Encode,pkcs7.RawData");
    kept.Uninstall();
    copied.Uninstall();
    certificate.Uninstall();
};

cases[WScript.Arguments(0)]();
