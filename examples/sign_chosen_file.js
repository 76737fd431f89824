// Has the user choose a file, signs it, and has the user choose where the signature goes.
//
//     cscript //nologo sign_chosen_file.js [THUMBPRINT]
//
// THUMBPRINT is the SHA-1 thumbprint of the certificate in hexadecimal digits; without it the first one of
// the user's own certificates that has a private key is taken. The signature is detached, with the
// certificate's chain in it. Ends with status 1 when the user cancels.
//
// The address of the host must be a trusted site, for example name://cscript.exe.

function cancelled() {
    WScript.Echo("Cancelled: nothing was signed.");
    WScript.Quit(1);
}

function main(thumbprint) {
    var gui = new ActiveXObject("VetrelCorvane2.GuiService");
    var crypto = new ActiveXObject("VetrelCorvane2.CryptoService");
    var service = new ActiveXObject("VetrelCorvane2.BinaryObjectService");
    var files = new ActiveXObject("VetrelCorvane2.FileSystemService");

    var filter = '"storeName": "My", "storeLocation": "user", "hasPrivateKeyOnly": true';
    var certificate = crypto.FindCertificate("{" + filter + (thumbprint ? ', "hash": "' + thumbprint + '"' : "") + "}");
    WScript.Echo("Certificate: " + certificate.CommonName);

    var path = gui.ShowOpenDialog();
    if (path === "") {
        cancelled();
    }
    var signature = crypto.Sign(service.BinaryObjectFromFile(path), certificate, true);
    WScript.Echo("Signed: " + path);

    var name = path.substr(path.lastIndexOf("\\") + 1) + ".p7s";
    var target = gui.ShowSaveDialog(name, '{"filter": "PKCS #7|*.p7s|"}');
    if (target === "") {
        cancelled();
    }
    // Nobody has asked the user about a file that is there already.
    if (files.FileExists(target)) {
        throw new Error(target + " is there already");
    }
    signature.ToFile(target);
    WScript.Echo("Signature: " + target + ", " + signature.Size + " bytes");
}

main(WScript.Arguments.length > 0 ? WScript.Arguments(0) : "");
