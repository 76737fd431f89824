// ZipArchive as a script sees it: lists, names, folders on disk.

var bytes = new ActiveXObject("VetrelCorvane2.BinaryObjectService");
var service = new ActiveXObject("VetrelCorvane2.CompressionService");
var files = new ActiveXObject("Scripting.FileSystemObject");

function binaryOf(text) {
    return bytes.BinaryObjectFromString(text, 65001);
}

function streamOfFile(path) {
    var stream = bytes.CreateStream();
    var binary = bytes.BinaryObjectFromFile(path);
    stream.Write(binary, 0, binary.Size);
    return stream;
}

function wait(start) {
    var outcome = null;
    start(function (result, error) {
        outcome = { result: result, error: error };
    });
    waitUntil(function () {
        return outcome !== null;
    });
    return outcome;
}

function textOf(binary) {
    return binary.ToString(65001);
}

var work = files.BuildPath(files.GetSpecialFolder(2).Path, files.GetTempName());
files.CreateFolder(work);

try {
    // What another program packed.
    var archive = service.OpenZipArchive(streamOfFile("../data/zip/info-zip.zip"));
    equal(archive.Count, 5);
    var entries = JSON.parse(archive.Entries);
    equal(entries[4].name, "дерево/папка/привет.txt");
    equal(entries[4].size, 13);
    equal(entries[4].crc, 0xbbacc7c2);
    equal(entries[3].directory, true);
    equal(archive.Find("дерево/папка/привет.txt"), 4);
    equal(textOf(archive.Extract(4)), "Привет\n");
    equal(textOf(archive.Extract("дерево\\папка\\привет.txt")), "Привет\n");
    throws(function () { archive.Extract("нет такого"); }, "[114]");
    throws(function () { archive.Extract(5); }, "[104]");
    throws(function () { archive.Extract(-1); }, "[104]");
    throws(function () { archive.Extract(2, 4999); }, "[10]");
    equal(textOf(wait(function (callback) { archive.ExtractAsync(4, callback); }).result), "Привет\n");

    // Everything into a folder that is not there yet; once more only when told to write over it.
    var folder = work + "\\a\\b";
    archive.ExtractAll(folder);
    equal(textOf(bytes.BinaryObjectFromFile(folder + "\\дерево\\папка\\привет.txt")), "Привет\n");
    equal(bytes.BinaryObjectFromFile(folder + "\\дерево\\zeros.bin").Size, 5000);
    equal(files.GetFile(folder + "\\дерево\\пусто").Size, 0);
    throws(function () { archive.ExtractAll(folder); }, "[28]");
    archive.ExtractAll(folder, 0, true);
    throws(function () { archive.ExtractAll(work + "\\c", 5012); }, "[10]");
    check(!files.FolderExists(work + "\\c"), "nothing is written above the limit");
    var token = new ActiveXObject("VetrelCorvane2.OperationToken");
    var outcome = wait(function (callback) { archive.ExtractAllAsync(work + "\\d", callback, 5013, false, token); });
    equal(outcome.error, undefined);
    equal(token.Progress, 1);

    // Archives that would write elsewhere.
    for (var i = 0; i < 6; ++i) {
        var unsafe = service.OpenZipArchive(streamOfFile("../data/zip/unsafe-" + i + ".zip"));
        throws(function () { unsafe.ExtractAll(work + "\\unsafe"); }, "[103]", "unsafe-" + i);
        check(!files.FolderExists(work + "\\unsafe"), "nothing is written");
    }
    throws(function () {
        service.OpenZipArchive(streamOfFile("../data/zip/info-zip-encrypted.zip")).ExtractAll(work + "\\unsafe");
    }, "[102]");

    // A folder packed and restored.
    var stream = bytes.CreateStream();
    service.Compress(folder, stream);
    var again = service.OpenZipArchive(stream);
    equal(again.Count, 5);
    equal(textOf(again.Extract("дерево/папка/привет.txt")), "Привет\n");
    var date = JSON.parse(again.Entries)[again.Find("дерево/zeros.bin")].date;
    equal(date, "2024-02-03T04:05:06", "the date of the file is the one of the entry it came from");
    throws(function () { service.Compress(folder, stream); }, "[100]");
    outcome = wait(function (callback) { service.CompressAsync(work + "\\none", bytes.CreateStream(), callback); });
    equal(outcome.error.indexOf("[27]"), 0);

    // Adding.
    again.Add("added.txt", binaryOf("added"));
    throws(function () { again.Add("added.txt", binaryOf("again")); }, "[113]");
    throws(function () { again.Add("../added.txt", binaryOf("again")); }, "[113]");
    var content = bytes.CreateStream();
    content.Write(binaryOf("from a stream"), 0, 13);
    content.Seek(0, 0);
    token = new ActiveXObject("VetrelCorvane2.OperationToken");
    wait(function (callback) { again.AddStreamAsync("stream.txt", content, callback, token); });
    equal(token.Progress, 1);
    again.AddFolder(folder + "\\дерево\\папка", "под");
    wait(function (callback) { again.AddFolderAsync(folder + "\\дерево\\пусто", callback); });
    again = service.OpenZipArchive(stream);
    equal(again.Count, 9);
    equal(textOf(again.Extract("stream.txt")), "from a stream");
    equal(textOf(again.Extract("под/привет.txt")), "Привет\n");
    equal(again.Extract("пусто").Size, 0);
    var output = bytes.CreateStream();
    again.ExtractStream("added.txt", output);
    equal(output.Size, 5);
    wait(function (callback) { again.ExtractStreamAsync("added.txt", output, callback); });
    equal(output.Size, 10);

    // Closed, and never opened.
    again.Close();
    equal(codeOf(throws(function () { again.Extract(0); }, "[112]")), "0x80040270");
    check(stream.Size > 0, "the stream stays open");
    throws(function () { new ActiveXObject("VetrelCorvane2.ZipArchive").Entries; }, "[112]");
} finally {
    files.DeleteFolder(work, true);
}
