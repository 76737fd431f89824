// CompressionService as a script sees it.
var service = create("CompressionService");
var files = create("BinaryObjectService");
var data = "../data/zip/";
var tree = files.BinaryObjectFromFile(data + "info-zip.zip");
var text = binaryOf("some text");

// Bytes: what other programs make comes out, and our own does.
values([
    ["textOf(service.PKUnzip(service.PKZip(text)))", "some text"],
    ["service.PKUnzip(service.PKZip(hex(''))).Size", 0],
    ["textOf(service.PKUnzip(hex('23212F610A' + service.PKZip(text).ToHexString())))", "some text"], // behind other data
    ["service.PKUnzipN(tree, 3).Size", 5000],
    ["textOf(service.PKUnzipN(tree, 5))", "Привет\n"],
    ["service.PKUnzipN(tree, 0).Equals(service.PKUnzipN(tree, 1))", true],
    ["textOf(service.GUnzip(service.GZip(text)))", "some text"],
    ["service.GZip(text).ToHexString().substr(0, 16)", "1F8B080000000000"], // RFC 1952, section 2.3
    // Version 2.0, deflate, 1980-01-01 (APPNOTE.TXT 4.3.7)
    ["service.PKZip(text).ToHexString().substr(0, 28)", "504B030414000000080000002100"],
    ["textOf(service.GUnzip(files.BinaryObjectFromFile(data + 'two-members.gz')))", "first member\nsecond member\n"]
]);
refusals([
    ["service.PKUnzip(text)", "[100] Ошибка при открытии ZIP файла"],
    ["service.PKUnzipN(tree, 6)", "[104] "],
    ["service.PKUnzip(files.BinaryObjectFromFile(data + 'info-zip-encrypted.zip'))",
        "[102] Ошибка при распаковке ZIP (элемент архива зашифрован)"],
    ["service.PKUnzip(files.BinaryObjectFromFile(data + '7-zip-bzip2.zip'))",
        "[103] Ошибка при распаковке ZIP: неверный формат входных данных (метод сжатия 12 не поддерживается)"],
    ["service.GUnzip(text)", "[108] "],
    ["service.PKZip(service)", "0x80004002"]
]);

// Streams.
var packed = files.CreateStream(), restored = files.CreateStream();
equal(later("service.GZipStreamAsync(streamOf(text), packed, done)"), undefined);
equal(packed.Position, packed.Size);
packed.Seek(0);
equal(later("service.GUnzipStreamAsync(packed, restored, done)"), undefined);
equal(textOf(contentOf(restored)), "some text");

packed = files.CreateStream();
restored = files.CreateStream();
var token = create("OperationToken");
equal(later("service.PKZipStreamAsync(streamOf(text), packed, done)"), undefined);
equal(later("service.PKUnzipNStreamAsync(packed, restored, done, 1, token)"), undefined);
equal(token.Progress, 1);
equal(textOf(contentOf(restored)), "some text");
equal(later("service.PKUnzipNStreamAsync(packed, restored, done, 2)").substr(0, 6), "[104] ");

// Output to which can only be written.
var disk = create("FileSystemService");
var path = disk.GetTempFolder() + "packed" + new Date().getTime() + Math.random();
var file = disk.OpenFile(path, 0x40000000, 1, 0);
equal(later("service.PKZipStreamAsync(streamOf(text), file, done)"), undefined);
file.Close();
equal(textOf(service.PKUnzip(files.BinaryObjectFromFile(path))), "some text");
disk.Delete(path);

// A token that is canceled before the work begins, and one stream for both sides.
token.SetCanceled();
packed = streamOf(text);
equal(later("service.GZipStreamAsync(streamOf(text), packed, done, token)"), "[35] Операция отменена");
equal(later("service.GZipStreamAsync(packed, packed, done)").substr(0, 6), "[105] ");
equal(packed.Size, 9, "nothing was written");
