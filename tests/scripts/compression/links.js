// Packs, fills and deletes folders that hold links, as files-test made them.
var service = create("CompressionService");
var bytes = create("BinaryObjectService");
var disk = create("FileSystemService");
var folder = WScript.Arguments(0);

var stream = bytes.CreateStream();
service.Compress(folder + "\\tree", stream);
equal(service.OpenZipArchive(stream).Count, 1, "what a link leads to is not packed");

stream = bytes.CreateStream();
var archive = service.OpenZipArchive(stream);
archive.Add("link/written.txt", binaryOf("written"));
fails(function () { archive.ExtractAll(folder + "\\tree"); }, "[40] ");

// A system may refuse to remove the link itself; what it leads to is looked at afterwards.
try {
    disk.DeleteFolder(folder + "\\tree", true);
} catch (error) {
    check(error.message.indexOf("[44] ") === 0, error.message);
}
