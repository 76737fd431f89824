// Prints the signers of a signature, one line each.
// arguments: the signature [, the document of a detached one]
var service = new ActiveXObject("VetrelCorvane2.CryptoService");
var bytes = new ActiveXObject("VetrelCorvane2.BinaryObjectService");
var signature = bytes.BinaryObjectFromFile(WScript.Arguments(0));
var signers = WScript.Arguments.length > 1
    ? service.VerifySignature(bytes.BinaryObjectFromFile(WScript.Arguments(1)), signature)
    : service.VerifyAttachedSignature(signature);
for (var e = new Enumerator(signers); !e.atEnd(); e.moveNext()) {
    WScript.Echo(e.item().CommonName);
}
