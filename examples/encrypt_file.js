// Encrypts a file of any size for one or several recipients, with a progress line.
//
//     cscript //nologo encrypt_file.js FILE MESSAGE CERTIFICATES [PERCENT]
//
// MESSAGE is made anew. CERTIFICATES are the recipients' certificates, files of Base64 text with or without the lines of
// PEM around it, with "|" between them. With PERCENT the script changes its mind when that much is done.

var GENERIC_READ = 0x80000000;
var GENERIC_WRITE = 0x40000000;
var CREATE_ALWAYS = 2;

var files = new ActiveXObject("VetrelCorvane2.FileSystemService");
var bytes = new ActiveXObject("VetrelCorvane2.BinaryObjectService");
var crypto = new ActiveXObject("VetrelCorvane2.CryptoService");

function argument(index, otherwise) {
    return WScript.Arguments.length > index ? WScript.Arguments(index) : otherwise;
}

var stopAt = Number(argument(3, 101));

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
    WScript.Echo("usage: cscript //nologo encrypt_file.js FILE MESSAGE CERTIFICATES [PERCENT]");
    WScript.Quit(2);
}

var recipients = [];
var paths = WScript.Arguments(2).split("|");
for (var i = 0; i < paths.length; ++i) {
    recipients.push(crypto.CreateCertificateFromContent(bytes.BinaryObjectFromFile(paths[i])));
    WScript.Echo("for " + recipients[i].CommonName);
}
var target = WScript.Arguments(1);
var input = files.OpenFile(WScript.Arguments(0));
var output = files.OpenFile(target, GENERIC_READ + GENERIC_WRITE, CREATE_ALWAYS, 0);
run("encrypting", function (done, token) {
    crypto.EncryptStreamAsync(input, output, recipients, done, token);
}, function () {
    // Nothing of the message is left in it.
    input.Close();
    output.Close();
    files.Delete(target);
});
WScript.Echo(input.Size + " bytes encrypted: " + output.Size + " bytes");
input.Close();
output.Close();
