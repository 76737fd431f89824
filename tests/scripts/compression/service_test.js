// CompressionService as a script sees it.
var service = create("CompressionService");
var files = create("BinaryObjectService");
var tree = files.BinaryObjectFromFile("../data/zip/info-zip.zip");
var text = binaryOf("some text");
var data = "../data/zip/";

function emptyStream() {
    return files.CreateStream();
}

// Bytes: what other programs make comes out, and our own does.
equalAll([
    ["PKZip, PKUnzip", "some text", textOf(service.PKUnzip(service.PKZip(text)))],
    ["PKZip of nothing", 0, service.PKUnzip(service.PKZip(hex(""))).Size],
    ["PKUnzip behind other data", "some text",
        textOf(service.PKUnzip(hex("23212F610A" + service.PKZip(text).ToHexString())))],
    ["PKUnzipN, the third entry", 5000, service.PKUnzipN(tree, 3).Size],
    ["PKUnzipN, the last entry", "Привет\n", textOf(service.PKUnzipN(tree, 5))],
    ["PKUnzipN, 0 is the first", true, service.PKUnzipN(tree, 0).Equals(service.PKUnzipN(tree, 1))],
    ["GZip, GUnzip", "some text", textOf(service.GUnzip(service.GZip(text)))],
    ["GZip (RFC 1952, section 2.3)", "1F8B080000000000", service.GZip(text).ToHexString().substr(0, 16)],
    ["PKZip: version 2.0, deflate, 1980-01-01 (APPNOTE.TXT 4.3.7)", "504B030414000000080000002100",
        service.PKZip(text).ToHexString().substr(0, 28)],
    ["GUnzip", "first member\nsecond member\n",
        textOf(service.GUnzip(files.BinaryObjectFromFile(data + "two-members.gz")))]
]);
fails(function () { service.PKUnzip(text); }, "[100] Ошибка при открытии ZIP файла");
fails(function () { service.PKUnzipN(tree, 6); }, "[104] ");
fails(function () { service.PKUnzip(files.BinaryObjectFromFile(data + "info-zip-encrypted.zip")); },
    "[102] Ошибка при распаковке ZIP (элемент архива зашифрован)");
fails(function () { service.PKUnzip(files.BinaryObjectFromFile(data + "7-zip-bzip2.zip")); },
    "[103] Ошибка при распаковке ZIP: неверный формат входных данных (метод сжатия 12 не поддерживается)");
fails(function () { service.GUnzip(text); }, "[108] ");
throws(function () { service.PKZip(service); }, "0x80004002");

// Streams.
var packed = emptyStream();
var restored = emptyStream();
equal(wait(function (done) { service.GZipStreamAsync(streamOf(text), packed, done); }), undefined);
equal(packed.Position, packed.Size);
packed.Seek(0);
equal(wait(function (done) { service.GUnzipStreamAsync(packed, restored, done); }), undefined);
equal(textOf(contentOf(restored)), "some text");

packed = emptyStream();
restored = emptyStream();
var token = create("OperationToken");
equal(wait(function (done) { service.PKZipStreamAsync(streamOf(text), packed, done); }), undefined);
equal(wait(function (done) { service.PKUnzipNStreamAsync(packed, restored, done, 1, token); }), undefined);
equal(token.Progress, 1);
equal(textOf(contentOf(restored)), "some text");
equal(wait(function (done) { service.PKUnzipNStreamAsync(packed, restored, done, 2); }).substr(0, 6), "[104] ");

// Output to which can only be written.
var disk = create("FileSystemService");
var path = disk.GetTempFolder() + "packed" + new Date().getTime() + Math.random();
var file = disk.OpenFile(path, 0x40000000, 1, 0);
equal(wait(function (done) { service.PKZipStreamAsync(streamOf(text), file, done); }), undefined);
file.Close();
equal(textOf(service.PKUnzip(files.BinaryObjectFromFile(path))), "some text");
disk.Delete(path);

// A token that is canceled before the work begins, and one stream for both sides.
token.SetCanceled();
packed = streamOf(text);
equal(wait(function (done) { service.GZipStreamAsync(streamOf(text), packed, done, token); }),
    "[35] Операция отменена");
equal(packed.Size, 9, "nothing was written");
var same = streamOf(text);
equal(wait(function (done) { service.GZipStreamAsync(same, same, done); }).substr(0, 6), "[105] ");
equal(same.Size, 9);
