// The SHA-256 digest of a file of any size, with a progress line; the file is never in memory as a whole.
//
//     cscript //nologo hash_file.js FILE [PERCENT]
//     tools/run-script x64 examples/hash_file.js FILE [PERCENT]      (here, under Wine)
//
// FILE is a Windows path. With PERCENT the script changes its mind when that much is done.

var file = new ActiveXObject("VetrelCorvane2.FileSystemService").OpenFile(WScript.Arguments(0));
var stopAt = WScript.Arguments.length > 1 ? Number(WScript.Arguments(1)) : 101;
var bytes = new ActiveXObject("VetrelCorvane2.BinaryObjectService");
var token = new ActiveXObject("VetrelCorvane2.OperationToken");
var finished = false;

bytes.GetSHA256StreamAsync(file, function (digest, error) {
    finished = true;
    WScript.Echo(error === undefined ? "SHA-256: " + digest.ToHexString() : "Stopped: " + error);
}, token);

var shown = -1;
while (!finished) {
    var percent = Math.floor(token.Progress * 100);
    if (percent !== shown) {
        shown = percent;
        WScript.StdErr.Write("\r" + percent + " %");
    }
    if (percent >= stopAt) {
        token.SetCanceled();
    }
    WScript.Sleep(1);
}
file.Close();
