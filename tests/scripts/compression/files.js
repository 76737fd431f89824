// What files-test looks at afterwards. arguments: the case, its folder or archive
var service = create("CompressionService");
var bytes = create("BinaryObjectService");
var disk = create("FileSystemService");
var path = WScript.Arguments(1);
var cases = {};

// Archives for other programs to read, the last of which grew twice.
cases.pack = function () {
    var content = bytes.BinaryObjectFromFile(path + "/tree/данные.bin");
    service.PKZip(content).ToFile(path + "/single.zip");
    service.GZip(content).ToFile(path + "/single.gz");
    var tree = bytes.CreateStream();
    service.Compress(path + "/tree", tree);
    contentOf(tree).ToFile(path + "/tree.zip");
    var archive = service.OpenZipArchive(tree);
    archive.Add("папка/добавлено.txt", binaryOf("добавлено"));
    archive.AddFolder(path + "/tree/вложенная", "ещё/раз");
    contentOf(tree).ToFile(path + "/grown.zip");
};

cases.grow = function () {
    var file = disk.OpenFile(path, 0xC0000000, 3, 0);
    var archive = service.OpenZipArchive(file);
    archive.Add("one", binaryOf("1"));
    archive.Add("two", binaryOf("2"));
    file.Close();
};

cases.follow = function () {
    var stream = bytes.CreateStream();
    service.Compress(path + "\\tree", stream);
    equal(service.OpenZipArchive(stream).Count, 1, "what a link leads to is not packed");
    var archive = service.OpenZipArchive(bytes.CreateStream());
    archive.Add("link/written.txt", binaryOf("written"));
    fails(function () { archive.ExtractAll(path + "\\tree"); }, "[40] ");
    // A system may refuse to remove the link itself.
    try {
        disk.DeleteFolder(path + "\\tree", true);
    } catch (error) {
        check(error.message.indexOf("[44] ") === 0, error.message);
    }
};

cases[WScript.Arguments(0)]();
