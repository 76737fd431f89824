// Tells of every signature of a message what is right and what is wrong with it, for a file of any size.
//
//     cscript //nologo inspect_file.js MESSAGE [PERCENT]
//     cscript //nologo inspect_file.js FILE SIGNATURE [PERCENT]
//
// MESSAGE holds what is signed, SIGNATURE is detached. With PERCENT the script changes its mind when that much is done.
// Ends with status 1 when the verdict is another than "good".

var files = new ActiveXObject("VetrelCorvane2.FileSystemService");
var bytes = new ActiveXObject("VetrelCorvane2.BinaryObjectService");
var crypto = new ActiveXObject("VetrelCorvane2.CryptoService");

function argument(index, otherwise) {
    return WScript.Arguments.length > index ? WScript.Arguments(index) : otherwise;
}

var second = argument(1, "");
var isDetached = second !== "" && isNaN(Number(second));
var stopAt = Number(argument(isDetached ? 2 : 1, 101));

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

if (WScript.Arguments.length < 1) {
    WScript.Echo("usage: cscript //nologo inspect_file.js MESSAGE, or inspect_file.js FILE SIGNATURE");
    WScript.Quit(2);
}

var input = files.OpenFile(WScript.Arguments(0));
var text = run("inspecting", function (done, token) {
    crypto.InspectStreamSignatureAsync(input, isDetached ? bytes.BinaryObjectFromFile(second) : null, done, token);
}, function () { input.Close(); });
input.Close();

// The JScript of the system's cscript has no JSON; the text is the component's own, and safe to evaluate.
var report = typeof JSON === "undefined" ? eval("(" + text + ")") : JSON.parse(text);
for (var i = 0; i < report.signers.length; ++i) {
    var signer = report.signers[i];
    var name = signer.certificate ? signer.certificate.CN : signer.serialNumber || signer.keyIdentifier;
    WScript.Echo(name + ": " + signer.verdict + (signer.chain ? ", chain: " + (signer.chain.names.join(" ") || "trusted") : ""));
}
WScript.Echo("The message: " + report.verdict);
WScript.Quit(report.verdict === "good" ? 0 : 1);
