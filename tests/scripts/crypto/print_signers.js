// Prints the signers of a signature, one line each.
// arguments: the signature [, the document of a detached one]
var service = create("CryptoService");
var bytes = create("BinaryObjectService");
var signature = bytes.BinaryObjectFromFile(WScript.Arguments(0));
var signers = WScript.Arguments.length > 1
    ? service.VerifySignature(bytes.BinaryObjectFromFile(WScript.Arguments(1)), signature)
    : service.VerifyAttachedSignature(signature);
for (var i = 0; i < signers.count; ++i) {
    WScript.Echo(signers.Item(i).CommonName);
}
