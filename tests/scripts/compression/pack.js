// Writes archives for other programs to read: arguments are a folder to pack and a folder for the results.
var service = create("CompressionService");
var bytes = create("BinaryObjectService");
var source = WScript.Arguments(0);
var target = WScript.Arguments(1) + "/";

var content = bytes.BinaryObjectFromFile(source + "/данные.bin");
service.PKZip(content).ToFile(target + "single.zip");
service.GZip(content).ToFile(target + "single.gz");
var tree = bytes.CreateStream();
service.Compress(source, tree);
contentOf(tree).ToFile(target + "tree.zip");

// An archive that grew twice.
var archive = service.OpenZipArchive(tree);
archive.Add("папка/добавлено.txt", binaryOf("добавлено"));
archive.AddFolder(source + "/вложенная", "ещё/раз");
contentOf(tree).ToFile(target + "grown.zip");
