// Packs a folder into a zip archive, lists it and unpacks it into another folder.
//
//     cscript //nologo zip_folder.js FOLDER ARCHIVE TARGET [PERCENT]
//     tools/run-script x64 examples/zip_folder.js FOLDER ARCHIVE TARGET [PERCENT]      (here, under Wine)
//
// The three are Windows paths; the second and the third are made anew. With PERCENT the script changes its mind when that
// much of the packing is done; ARCHIVE is then empty.

var GENERIC_READ = 0x80000000;
var GENERIC_WRITE = 0x40000000;
var CREATE_ALWAYS = 2;
// More than this is not unpacked, whatever an archive holds.
var MAX_SIZE = 4 * 1024 * 1024 * 1024;

var files = new ActiveXObject("VetrelCorvane2.FileSystemService");
var compression = new ActiveXObject("VetrelCorvane2.CompressionService");
var token = new ActiveXObject("VetrelCorvane2.OperationToken");

var stopAt = WScript.Arguments.length > 3 ? Number(WScript.Arguments(3)) : 101;

// Waits for an operation that start(callback) starts.
function run(title, start) {
    var outcome = null;
    start(function (result, error) { outcome = { error: error }; });
    while (outcome === null) {
        var percent = Math.floor(token.Progress * 100);
        WScript.StdErr.Write("\r" + title + ": " + percent + " %");
        if (percent >= stopAt) {
            token.SetCanceled();
        }
        WScript.Sleep(1);
    }
    if (outcome.error !== undefined) {
        WScript.Echo("Stopped: " + outcome.error);
        file.Close();
        WScript.Quit(1);
    }
}

var file = files.OpenFile(WScript.Arguments(1), GENERIC_READ + GENERIC_WRITE, CREATE_ALWAYS, 0);
var archive = compression.OpenZipArchive(file);
run("packing", function (done) { archive.AddFolderAsync(WScript.Arguments(0), done, "", token); });
WScript.Echo(archive.Count + " entries in " + file.Size + " bytes");
run("unpacking", function (done) { archive.ExtractAllAsync(WScript.Arguments(2), done, MAX_SIZE, false, token); });
file.Close();
