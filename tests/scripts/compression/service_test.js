// CompressionService as a script sees it.

var bytes = new ActiveXObject("VetrelCorvane2.BinaryObjectService");
var service = new ActiveXObject("VetrelCorvane2.CompressionService");

function textOf(binary) {
    return binary.ToString(65001);
}

function binaryOf(text) {
    return bytes.BinaryObjectFromString(text, 65001);
}

// A stream with a text, at its beginning.
function streamOf(text) {
    var stream = bytes.CreateStream();
    var binary = binaryOf(text);
    stream.Write(binary, 0, binary.Size);
    stream.Seek(0, 0);
    return stream;
}

// Calls start(callback), waits for the callback and returns {result, error}.
function wait(start) {
    var outcome = null;
    start(function (result, error) {
        check(outcome === null, "the callback is called once");
        outcome = { result: result, error: error };
    });
    check(outcome === null, "the method returns first");
    waitUntil(function () {
        return outcome !== null;
    });
    return outcome;
}

// Bytes: what other programs make comes out, and our own does.
equal(textOf(service.PKUnzip(service.PKZip(binaryOf("Привет")))), "Привет");
equal(textOf(service.GUnzip(service.GZip(binaryOf("Привет")))), "Привет");
equal(service.PKUnzip(service.PKZip(binaryOf(""))).Size, 0);
equal(service.GZip(binaryOf("data")).ToHexString().substr(0, 16), "1F8B080000000000");
var members = bytes.BinaryObjectFromFile("../data/zip/two-members.gz");
equal(textOf(service.GUnzip(members)), "first member\nsecond member\n");
var tree = bytes.BinaryObjectFromFile("../data/zip/info-zip.zip");
equal(service.PKUnzipN(tree, 3).Size, 5000);
equal(textOf(service.PKUnzipN(tree, 5)), "Привет\n");
equal(service.PKUnzipN(tree, 0).Size, service.PKUnzipN(tree, 1).Size);

// Errors: 0x80040200 and the number.
equal(codeOf(throws(function () { service.PKUnzip(binaryOf("text")); }, "[100] Ошибка при открытии ZIP файла")), "0x80040264");
equal(codeOf(throws(function () { service.PKUnzipN(tree, 6); }, "[104]")), "0x80040268");
equal(codeOf(throws(function () { service.GUnzip(binaryOf("text")); }, "[108]")), "0x8004026c");
equal(codeOf(throws(function () { service.PKZip(service); })), "0x80004002");

// Streams.
var packed = bytes.CreateStream();
var outcome = wait(function (callback) { service.GZipStreamAsync(streamOf("some text"), packed, callback); });
equal(outcome.result, undefined);
equal(outcome.error, undefined);
equal(packed.Position, packed.Size);
packed.Seek(0, 0);
var restored = bytes.CreateStream();
wait(function (callback) { service.GUnzipStreamAsync(packed, restored, callback); });
restored.Seek(0, 0);
equal(textOf(restored.Read(100)), "some text");

packed = bytes.CreateStream();
wait(function (callback) { service.PKZipStreamAsync(streamOf("some text"), packed, callback); });
restored = bytes.CreateStream();
var token = new ActiveXObject("VetrelCorvane2.OperationToken");
wait(function (callback) { service.PKUnzipNStreamAsync(packed, restored, callback, 1, token); });
equal(token.Progress, 1);
restored.Seek(0, 0);
equal(textOf(restored.Read(100)), "some text");
outcome = wait(function (callback) { service.PKUnzipNStreamAsync(packed, restored, callback, 2); });
equal(outcome.result, undefined);
equal(outcome.error.indexOf("[104] "), 0);

// A token that is canceled before the work begins, and one stream for both sides.
token = new ActiveXObject("VetrelCorvane2.OperationToken");
token.SetCanceled();
packed = bytes.CreateStream();
outcome = wait(function (callback) { service.GZipStreamAsync(streamOf("text"), packed, callback, token); });
equal(outcome.error, "[35] Операция отменена");
equal(packed.Size, 0);
var same = streamOf("text");
outcome = wait(function (callback) { service.GZipStreamAsync(same, same, callback); });
equal(outcome.error.indexOf("[105] "), 0);
equal(same.Size, 4);
