// Signs a file of any size, with a progress line; the file is never in memory as a whole.
//
//     cscript //nologo sign_file.js FILE SIGNATURE detached|attached [THUMBPRINT] [PERCENT]
//
// SIGNATURE is made anew: a detached signature, or a message that holds the file too, with the chain of the signer's
// certificate. THUMBPRINT is the SHA-1 thumbprint of the certificate in hexadecimal digits; without it, or with "", the
// first one of the user's own certificates that has a private key is taken. With PERCENT the script changes its mind when
// that much is done, as a user does with a button.

var GENERIC_READ = 0x80000000;
var GENERIC_WRITE = 0x40000000;
var CREATE_ALWAYS = 2;

var files = new ActiveXObject("VetrelCorvane2.FileSystemService");
var crypto = new ActiveXObject("VetrelCorvane2.CryptoService");

function argument(index, otherwise) {
    return WScript.Arguments.length > index ? WScript.Arguments(index) : otherwise;
}

var stopAt = Number(argument(4, 101));

// Starts an operation with start(done, token), shows how far it is, and gives its result. Where it fails or is
// cancelled, undo() puts things right.
function run(title, start, undo) {
    var token = new ActiveXObject("VetrelCorvane2.OperationToken");
    var outcome = null;
    start(function (result, error) { outcome = { result: result, error: error }; }, token);
    while (outcome === null) {
        var percent = Math.floor(token.Progress * 100);
        WScript.StdErr.Write("\r" + title + ": " + percent + " %");
        if (percent >= stopAt) {
            token.SetCanceled();
        }
        WScript.Sleep(1);
    }
    WScript.StdErr.Write("\n");
    if (outcome.error !== undefined) {
        undo();
        WScript.Echo("Stopped: " + outcome.error);
        WScript.Quit(1);
    }
    return outcome.result;
}

if (WScript.Arguments.length < 3) {
    WScript.Echo("usage: cscript //nologo sign_file.js FILE SIGNATURE detached|attached [THUMBPRINT] [PERCENT]");
    WScript.Quit(2);
}

var thumbprint = argument(3, "");
var certificate = crypto.FindCertificate('{"storeName": "My", "storeLocation": "user", "hasPrivateKeyOnly": true' +
    (thumbprint ? ', "hash": "' + thumbprint + '"' : "") + "}");
var target = WScript.Arguments(1);
var input = files.OpenFile(WScript.Arguments(0));
var output = files.OpenFile(target, GENERIC_READ + GENERIC_WRITE, CREATE_ALWAYS, 0);
run("signing", function (done, token) {
    crypto.SignStreamAsync(input, output, certificate, WScript.Arguments(2) === "attached", done, token, true);
}, function () {
    // What was written so far is still there, and is no signature.
    input.Close();
    output.Close();
    files.Delete(target);
});
WScript.Echo(certificate.CommonName + " has signed " + input.Size + " bytes: " + output.Size + " bytes");
input.Close();
output.Close();
