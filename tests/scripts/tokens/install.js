// Puts a certificate onto a token. arguments: the folder with path.txt and answer.der
var provider = create("CryptoService").GetDefaultCryptoProvider();
var bytes = create("BinaryObjectService");
var folder = WScript.Arguments(0) + "/";
var path = textOf(bytes.BinaryObjectFromFile(folder + "path.txt"));
var answer = bytes.BinaryObjectFromFile(folder + "answer.der");

throws(function () { provider.InstallCertificateResponseGOST(answer.ToBase64(), path.substr(1), "12345678"); }, "0x80040200", "Не верный формат пути до ключевого контейнера");
throws(function () { provider.InstallCertificateResponseGOST(answer.ToBase64(), path, "1"); }, "0x800405e8", "C_Login: CKR_PIN_INCORRECT");
fails(function () { provider.InstallCertificateResponseGOST("no certificate", path, "12345678"); }, "[324] ");
provider.InstallCertificateResponseGOST(answer.ToBase64(), path, "12345678");
