// CompressionService as a script sees it.
var service = create("CompressionService");
var files = create("BinaryObjectService");
var data = "../data/zip/";
var tree = files.BinaryObjectFromFile(data + "info-zip.zip");
var text = binaryOf("some text");

// Bytes: what other programs make comes out, and our own does.
table("compression");

// Streams; the output ends where it was written to.
var packed = files.CreateStream(), restored = files.CreateStream(), token = create("OperationToken");
values([
    ["later('service.PKZipStreamAsync(streamOf(text), packed, done)')", undefined],
    ["packed.Position === packed.Size", true],
    ["later('service.PKUnzipNStreamAsync(packed, restored, done, 1, token)')", undefined],
    ["token.Progress", 1],
    ["textOf(contentOf(restored))", "some text"],
    ["later('service.PKUnzipNStreamAsync(packed, restored, done, 2)').substr(0, 6)", "[104] "]
]);

// Output to which can only be written.
var disk = create("FileSystemService");
var path = disk.GetTempFolder() + "packed" + new Date().getTime() + Math.random();
var file = disk.OpenFile(path, 0x40000000, 1, 0);
equal(later("service.PKZipStreamAsync(streamOf(text), file, done)"), undefined);
file.Close();
equal(textOf(service.PKUnzip(files.BinaryObjectFromFile(path))), "some text");
disk.Delete(path);
