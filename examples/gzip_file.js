// Packs a file as gzip and unpacks it again, with a progress line; neither file is ever in memory as a whole.
//
//     cscript //nologo gzip_file.js FILE PACKED UNPACKED [PERCENT]
//     tools/run-script x64 examples/gzip_file.js FILE PACKED UNPACKED [PERCENT]      (here, under Wine)
//
// The three are Windows paths; the second and the third are made anew. With PERCENT the script changes its mind when that
// much of the packing is done; PACKED is then empty.

var GENERIC_READ = 0x80000000;
var GENERIC_WRITE = 0x40000000;
var OPEN_EXISTING = 3;
var CREATE_ALWAYS = 2;
var FILE_SHARE_READ = 1;

var files = new ActiveXObject("VetrelCorvane2.FileSystemService");
var compression = new ActiveXObject("VetrelCorvane2.CompressionService");

var stopAt = WScript.Arguments.length > 3 ? Number(WScript.Arguments(3)) : 101;

// Starts an operation with start(input, output, callback, token) and waits for it.
function run(title, from, to, start) {
    var input = files.OpenFile(from, GENERIC_READ, OPEN_EXISTING, FILE_SHARE_READ);
    var output = files.OpenFile(to, GENERIC_READ + GENERIC_WRITE, CREATE_ALWAYS, 0);
    var token = new ActiveXObject("VetrelCorvane2.OperationToken");
    var outcome = null;
    start(input, output, function (result, error) { outcome = { error: error }; }, token);
    while (outcome === null) {
        var percent = Math.floor(token.Progress * 100);
        WScript.StdErr.Write("\r" + title + ": " + percent + " %");
        if (percent >= stopAt) {
            token.SetCanceled();
        }
        WScript.Sleep(1);
    }
    var done = title + ": " + input.Size + " bytes to " + output.Size + " bytes";
    WScript.Echo(outcome.error === undefined ? done : "Stopped: " + outcome.error);
    input.Close();
    output.Close();
    if (outcome.error !== undefined) {
        WScript.Quit(1);
    }
}

var source = WScript.Arguments(0);
var packed = WScript.Arguments(1);
var unpacked = WScript.Arguments(2);
run("packing", source, packed, function (input, output, done, token) {
    compression.GZipStreamAsync(input, output, done, token);
});
run("unpacking", packed, unpacked, function (input, output, done, token) {
    compression.GUnzipStreamAsync(input, output, done, token);
});
