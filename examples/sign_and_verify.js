// Signs a file with one's own certificate and verifies both kinds of signature.
//
//     cscript //nologo sign_and_verify.js FILE [THUMBPRINT]
//
// THUMBPRINT is the SHA-1 thumbprint of the certificate in hexadecimal digits; without it the first one of
// the user's own certificates that has a private key is taken. Two files appear beside FILE:
//
//     FILE.p7s    the detached signature, with the certificate's chain in it
//     FILE.p7m    the message that holds the file and its signature
//
// The address of the host must be a trusted site, for example name://cscript.exe.

var unsignedCode = function (error) {
    return "0x" + (error.number < 0 ? error.number + 4294967296 : error.number).toString(16);
};

function filterFor(thumbprint) {
    var filter = '"storeName": "My", "storeLocation": "user", "hasPrivateKeyOnly": true';
    return "{" + filter + (thumbprint ? ', "hash": "' + thumbprint + '"' : "") + "}";
}

function printSigners(signers) {
    for (var each = new Enumerator(signers); !each.atEnd(); each.moveNext()) {
        var certificate = each.item();
        WScript.Echo("    signed by " + certificate.CommonName);
        WScript.Echo("    issued by " + certificate.IssuerName);
        WScript.Echo("    thumbprint " + certificate.Hash.ToHexString());
    }
}

// Whoever verifies asks two things: that the signatures are good, and that the signer is the expected one.
function requireSigner(signers, certificate) {
    if (signers.count !== 1 || !signers.Item(0).Hash.Equals(certificate.Hash)) {
        throw new Error("the message is not signed by the certificate it was signed with");
    }
}

function isRefused(verify) {
    try {
        verify();
    } catch (error) {
        WScript.Echo("    refused: " + unsignedCode(error) + " " + error.description);
        return true;
    }
    return false;
}

function main(path, thumbprint) {
    // "new ActiveXObject", because WScript.CreateObject does not tell an object whose script it is.
    var crypto = new ActiveXObject("VetrelCorvane2.CryptoService");
    var service = new ActiveXObject("VetrelCorvane2.BinaryObjectService");

    var certificate = crypto.FindCertificate(filterFor(thumbprint));
    WScript.Echo("Certificate: " + certificate.Subject);
    WScript.Echo("    valid until " + new Date(certificate.ValidTo).toUTCString());

    var data = service.BinaryObjectFromFile(path);
    WScript.Echo("File: " + data.Size + " bytes");

    var signature = crypto.Sign(data, certificate, true);
    signature.ToFile(path + ".p7s");
    WScript.Echo("Detached signature: " + signature.Size + " bytes");

    var message = crypto.AttachedSign(data, certificate, true);
    message.ToFile(path + ".p7m");
    WScript.Echo("Attached signature: " + message.Size + " bytes");

    // What is verified is what lies on the disk.
    signature = service.BinaryObjectFromFile(path + ".p7s");
    var signers = crypto.VerifySignature(data, signature);
    WScript.Echo("The detached signature is good:");
    printSigners(signers);
    requireSigner(signers, certificate);

    message = service.BinaryObjectFromFile(path + ".p7m");
    signers = crypto.VerifyAttachedSignature(message);
    WScript.Echo("The attached signature is good:");
    printSigners(signers);
    requireSigner(signers, certificate);

    var changed = service.BinaryObjectFromHex(data.ToHexString() + "21");
    WScript.Echo("The detached signature with a changed file:");
    if (!isRefused(function () { crypto.VerifySignature(changed, signature); })) {
        throw new Error("a changed file passes for the signed one");
    }
    WScript.Echo("Done.");
}

if (WScript.Arguments.length < 1) {
    WScript.Echo("usage: cscript //nologo sign_and_verify.js FILE [THUMBPRINT]");
    WScript.Quit(2);
}
main(WScript.Arguments(0), WScript.Arguments.length > 1 ? WScript.Arguments(1) : "");
