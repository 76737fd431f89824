// Installs the answers, signs with the keys that they are for, and takes the certificates away again.
// arguments: the container, the folder with the answers and path.txt, the document; signed.p7s comes into the folder
var service = create("CryptoService");
var bytes = create("BinaryObjectService");
var container = WScript.Arguments(0);
var folder = WScript.Arguments(1) + "/";
var document = bytes.BinaryObjectFromFile(WScript.Arguments(2));
var path = textOf(bytes.BinaryObjectFromFile(folder + "path.txt"));

function answer(name) {
    return bytes.BinaryObjectFromFile(folder + name);
}

var digits = answer("answer.cer").ToHexString();
fails(function () { service.InstallCertificateResponse("31" + digits.substr(2), "My"); },
    "[324] Ошибка при получении содержимого объекта криптографии");
fails(function () { service.InstallCertificateResponseEx(answer("plain.cer").ToBase64(), path, "My"); },
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
certificate = service.GetDefaultCryptoProvider().InstallCertificateResponseEx(answer("answer.cer").ToBase64(), path, "My");
signed(certificate);

// A key that may leave is copied; one that may not, stays.
var provider = service.GetDefaultCryptoProvider();
provider.CopyKeyContainer(certificate, container + " copy");
var copied = provider.InstallCertificateResponseEx(digits, container + " copy", "My");
service.VerifySignature(document, service.Sign(document, copied, false));
fails(function () { provider.CopyKeyContainer(certificate, container + " copy"); }, "[301] ");
var kept = service.InstallCertificateResponse(answer("plain.cer").ToBase64(), "My");
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
