// Verifies a signature that somebody else has made, and prints who has signed.
//
//     cscript //nologo verify.js FILE SIGNATURE     a detached signature over FILE
//     cscript //nologo verify.js MESSAGE            a message that holds what is signed
//
// Both as binary files (DER), or as Base64 text with or without the lines of PEM around it.

var service = new ActiveXObject("VetrelCorvane2.BinaryObjectService");
var crypto = new ActiveXObject("VetrelCorvane2.CryptoService");

// A CMS message in DER or BER begins with the byte of an ASN.1 SEQUENCE, which is no letter of Base64 or PEM's dash:
// those start with "M" or "-".
function readMessage(path) {
    var bytes = service.BinaryObjectFromFile(path);
    if (bytes.Size > 0 && bytes.GetByte(0) !== 0x30) {
        var text = bytes.ToString(65001).replace(/-----[^-]*-----/g, "");
        bytes = service.BinaryObjectFromBase64(text);
    }
    return bytes;
}

function verify(paths) {
    if (paths.length === 1) {
        return crypto.VerifyAttachedSignature(readMessage(paths(0)));
    }
    return crypto.VerifySignature(service.BinaryObjectFromFile(paths(0)), readMessage(paths(1)));
}

if (WScript.Arguments.length < 1) {
    WScript.Echo("usage: cscript //nologo verify.js FILE SIGNATURE, or verify.js MESSAGE");
    WScript.Quit(2);
}
var signers = verify(WScript.Arguments);
for (var i = 0; i < signers.count; ++i) {
    WScript.Echo("signed by " + signers.Item(i).Subject + ", thumbprint " + signers.Item(i).Hash.ToHexString());
}
if (signers.count === 0) {
    WScript.Echo("nobody has signed this");
    WScript.Quit(1);
}
