// Verifies the signatures of a file of any size, with a progress line, and tells whether the signers are trusted.
//
//     cscript //nologo verify_file.js detached FILE SIGNATURE [PERCENT]
//     cscript //nologo verify_file.js attached MESSAGE CONTENT [PERCENT]
//
// CONTENT is made anew: what the message holds, once its signatures were found good. With PERCENT the script changes its
// mind when that much is done. Ends with status 1 when a signature is not good or a signer is not trusted.

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
    WScript.Echo("usage: cscript //nologo verify_file.js detached FILE SIGNATURE, or attached MESSAGE CONTENT");
    WScript.Quit(2);
}

var isAttached = WScript.Arguments(0) === "attached";
var input = files.OpenFile(WScript.Arguments(1));
var signers = run("verifying", function (done, token) {
    if (isAttached) {
        crypto.VerifyStreamAttachedSignatureAsync(input, done, token);
    } else {
        crypto.VerifyStreamSignatureAsync(input, bytes.BinaryObjectFromFile(WScript.Arguments(2)), done, token);
    }
}, function () { input.Close(); });

// A good signature says that the file is as it was; whether to believe the signer is another question. Here no
// revocation is asked for (flags 0), so nothing waits for the network.
var trusted = signers.count > 0;
for (var i = 0; i < signers.count; ++i) {
    var status = crypto.VerifyCertificate(signers.Item(i), 0);
    trusted = trusted && status === 0;
    WScript.Echo("signed by " + signers.Item(i).CommonName + ", " + (status === 0 ? "trusted" : "chain status " + status));
}

// Only now: what is extracted is not verified on the way.
if (isAttached && trusted) {
    var target = WScript.Arguments(2);
    var output = files.OpenFile(target, GENERIC_READ + GENERIC_WRITE, CREATE_ALWAYS, 0);
    input.Seek(0);
    run("extracting", function (done, token) {
        crypto.ExtractContentFromSignature(input, output, done, token);
    }, function () {
        input.Close();
        output.Close();
        files.Delete(target);
    });
    WScript.Echo(output.Size + " bytes extracted");
    output.Close();
}
input.Close();
WScript.Quit(trusted ? 0 : 1);
