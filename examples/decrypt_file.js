// Decrypts a file of any size with a key of the user or of the machine, with a progress line.
//
//     cscript //nologo decrypt_file.js MESSAGE FILE [PERCENT]
//
// FILE is made anew. The key is found by the message itself: that of the first recipient whose certificate lies in the
// user's store "My", or else in the machine's. With PERCENT the script changes its mind when that much is done.

var GENERIC_READ = 0x80000000;
var GENERIC_WRITE = 0x40000000;
var CREATE_ALWAYS = 2;

var files = new ActiveXObject("VetrelCorvane2.FileSystemService");
var crypto = new ActiveXObject("VetrelCorvane2.CryptoService");

function argument(index, otherwise) {
    return WScript.Arguments.length > index ? WScript.Arguments(index) : otherwise;
}

var stopAt = Number(argument(2, 101));

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

if (WScript.Arguments.length < 2) {
    WScript.Echo("usage: cscript //nologo decrypt_file.js MESSAGE FILE [PERCENT]");
    WScript.Quit(2);
}

var target = WScript.Arguments(1);
var input = files.OpenFile(WScript.Arguments(0));
var output = files.OpenFile(target, GENERIC_READ + GENERIC_WRITE, CREATE_ALWAYS, 0);
run("decrypting", function (done, token) {
    crypto.DecryptStreamAsync(input, output, done, token);
}, function () {
    // Nothing of the content is left in it.
    input.Close();
    output.Close();
    files.Delete(target);
});
WScript.Echo(output.Size + " bytes decrypted");
input.Close();
output.Close();
