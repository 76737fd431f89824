// Adds a signature to a signed message, beside those that it has.
//
//     cscript //nologo cosign_file.js SIGNATURE RESULT [FILE] [THUMBPRINT]
//
// FILE is what a detached signature is for; for a message that holds its content it is left out, or "". THUMBPRINT is the
// SHA-1 thumbprint of the certificate in hexadecimal digits; without it the first one of the user's own certificates that
// has a private key is taken. RESULT is written when the new message was verified, the earlier signatures included.
//
// This works in memory, the file included, and cannot be cancelled: there is no form for streams.

var crypto = new ActiveXObject("VetrelCorvane2.CryptoService");
var bytes = new ActiveXObject("VetrelCorvane2.BinaryObjectService");

function argument(index, otherwise) {
    return WScript.Arguments.length > index ? WScript.Arguments(index) : otherwise;
}

if (WScript.Arguments.length < 2) {
    WScript.Echo("usage: cscript //nologo cosign_file.js SIGNATURE RESULT [FILE] [THUMBPRINT]");
    WScript.Quit(2);
}

var thumbprint = argument(3, "");
var certificate = crypto.FindCertificate('{"storeName": "My", "storeLocation": "user", "hasPrivateKeyOnly": true' +
    (thumbprint ? ', "hash": "' + thumbprint + '"' : "") + "}");
var message = bytes.BinaryObjectFromFile(WScript.Arguments(0));
var file = argument(2, "");
var data = file === "" ? null : bytes.BinaryObjectFromFile(file);
var result = crypto.AddSignerToSignature(message, data, certificate, true);
result.ToFile(WScript.Arguments(1));
WScript.Echo(certificate.CommonName + " has signed too");
