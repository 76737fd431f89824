// What files-test looks at afterwards. arguments: the case, its folder or archive
var service = create("CompressionService");
var stream = create("BinaryObjectService").CreateStream();
var disk = create("FileSystemService");
var path = WScript.Arguments(1);
var archive;

switch (WScript.Arguments(0)) {
case "pack": // for other programs to read, and grown twice
    service.Compress(path + "/tree", stream);
    contentOf(stream).ToFile(path + "/tree.zip");
    archive = service.OpenZipArchive(stream);
    archive.Add("папка/добавлено.txt", binaryOf("добавлено"));
    archive.AddFolder(path + "/tree/вложенная", "ещё/раз");
    contentOf(stream).ToFile(path + "/grown.zip");
    break;
case "grow":
    archive = service.OpenZipArchive(disk.OpenFile(path, 0xC0000000, 3, 0));
    archive.Add("one", binaryOf("1"));
    archive.Add("two", binaryOf("2"));
    break;
case "follow":
    service.Compress(path + "\\tree", stream);
    equal(service.OpenZipArchive(stream).Count, 1, "what a link leads to is not packed");
    archive = service.OpenZipArchive(create("BinaryObjectService").CreateStream());
    archive.Add("link/written.txt", binaryOf("written"));
    fails(function () { archive.ExtractAll(path + "\\tree"); }, "[40] ");
    // A system may refuse to remove the link itself.
    try {
        disk.DeleteFolder(path + "\\tree", true);
    } catch (error) {
        check(error.message.indexOf("[44] ") === 0, error.message);
    }
}
