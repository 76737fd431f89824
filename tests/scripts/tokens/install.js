// Puts a certificate onto a token. arguments: the folder with path.txt, the certificate
var bytes = create("BinaryObjectService");
var path = textOf(bytes.BinaryObjectFromFile(WScript.Arguments(0) + "/path.txt"));
var answer = bytes.BinaryObjectFromFile(WScript.Arguments(1));
create("CryptoService").GetDefaultCryptoProvider().InstallCertificateResponseGOST(answer.ToBase64(), path, "12345678");
