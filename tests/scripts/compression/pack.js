// Writes archives for other programs to read: arguments are a folder to pack and a folder for the results.

var bytes = new ActiveXObject("VetrelCorvane2.BinaryObjectService");
var service = new ActiveXObject("VetrelCorvane2.CompressionService");
var source = WScript.Arguments(0);
var target = WScript.Arguments(1);

function save(stream, name) {
    stream.Seek(0, 0);
    stream.Read(stream.Size).ToFile(target + "/" + name);
}

var content = bytes.BinaryObjectFromFile(source + "/данные.bin");
service.PKZip(content).ToFile(target + "/single.zip");
service.GZip(content).ToFile(target + "/single.gz");

var tree = bytes.CreateStream();
service.Compress(source, tree);
save(tree, "tree.zip");

// An archive that grew twice.
var archive = service.OpenZipArchive(tree);
archive.Add("папка/добавлено.txt", bytes.BinaryObjectFromString("добавлено", 65001));
archive.AddFolder(source + "/вложенная", "ещё/раз");
save(tree, "grown.zip");
