// The way from a key to a certificate for it, for enroll-test. arguments: the case, the name of the container, the folder with
// what is made and read
var service = create("CryptoService");
var provider = service.GetDefaultCryptoProvider();
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

    equal(JSON.parse(service.DecodeCertificationRequest(request)).signatureValid, true);
    var changed = request.ToHexString().replace("310B3009060355040613025255", "310B3009060355040613025553"); // the country
    var refused = JSON.parse(service.DecodeCertificationRequest(hex(changed)));
    equal(refused.signatureValid, false);
    check(!("signatureError" in refused));

    // The same by a provider of one's own choice, without extras; a key that may not leave.
    provider.CreateCertificationRequest(container + " plain", 1, name, extensions, 1, true).ToFile(folder + "plain.der");
    function refuse(suffix, attribute, text) {
        fails(function () {
            service.CreateCertificationRequestExV2(container + suffix, 1, name, extensions, attribute, true, true);
        }, text);
    }
    refuse("", null, "[301] Ошибка при получении криптопровайдера");
    refuse(" none\u0000x", null, "[301] ");
    refuse(" other", name, "[609] ");
    // A container with a key for signatures alone, which no answer is for.
    service.CreateCertificationRequest(container + " signature", 2, name, extensions, false, true);
};

// Installs the answers, signs with the keys that they are for (signed.p7s), and takes the certificates away again.
cases.install = function () {
    var document = load("document");
    var path = textOf(load("path.txt"));
    var digits = load("answer.cer").ToHexString();
    var base64 = load("answer.cer").ToBase64();
    var list = load("list.p7s"); // of certificates, but a message
    var others = ["", "no certificate", "ABCD", "31" + digits.substr(2), base64.substr(0, 400)];
    others.push(base64.substr(0, 40) + "ж" + base64.substr(41), list.ToBase64(), list.ToHexString());
    var store = "Refused " + container; // which no other case fills meanwhile
    for (var i = 0; i < others.length; ++i) {
        fails(function () { service.InstallCertificateResponse(others[i], store); },
            "[324] Ошибка при получении содержимого объекта криптографии", others[i].substr(0, 30));
    }
    fails(function () { service.InstallCertificateResponse(load("foreign.cer").ToBase64(), store); }, "[323] ");
    var wrong = "[327] Контейнер не соответствует устанавливаемому сертификату";
    fails(function () { service.InstallCertificateResponseEx(load("plain.cer").ToBase64(), path, store); }, wrong);
    fails(function () { service.InstallCertificateResponseEx(base64, container + " signature", store); }, wrong);
    equal(service.GetCertificates(JSON.stringify({ storeName: store })).count, 0);

    function signed(certificate) {
        equal(JSON.parse(certificate.GetContainerInfo()).containerName.slice(-container.length), container);
        var signature = service.Sign(document, certificate, false);
        equal(service.VerifySignature(document, signature).Item(0).CommonName, "Петров Пётр");
        return signature;
    }
    var certificate = service.InstallCertificateResponse(digits.toLowerCase().replace(/.{64}/g, "$&\r\n"), "My");
    signed(certificate).ToFile(folder + "signed.p7s");
    certificate.Uninstall();
    var pem = "-----BEGIN CERTIFICATE-----\n" + base64.replace(/.{64}/g, "$&\n") + "\n-----END CERTIFICATE-----\n";
    service.InstallCertificateResponseEx(pem, path, "My").Uninstall();
    certificate = provider.InstallCertificateResponseEx(base64, path, "My");
    signed(certificate);

    // A key that may leave is copied; one that may not, stays.
    provider.CopyKeyContainer(certificate, container + " copy");
    var copied = provider.InstallCertificateResponseEx(digits, container + " copy", "My");
    service.VerifySignature(document, service.Sign(document, copied, false));
    signed(service.InstallCertificateResponse(digits, "My")); // by the first of the containers with its key
    fails(function () { provider.CopyKeyContainer(certificate, container + " copy"); }, "[301] ");
    var kept = service.InstallCertificateResponse(load("plain.cer").ToBase64(), "My");
    fails(function () { provider.CopyKeyContainer(kept, container + " none"); }, "[322] Ошибка при экспортировании ключа");
    fails(function () { provider.InstallCertificateResponseEx(digits, container + " none", "My"); }, "[301] ");
    kept.Uninstall();
    copied.Uninstall();
    certificate.Uninstall();
};

cases[WScript.Arguments(0)]();
