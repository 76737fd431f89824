// Streams, asynchronous calls and tokens as a script sees them. The digests are those of RFC 1321 and FIPS 180-4.

var service = new ActiveXObject("VetrelCorvane2.BinaryObjectService");
var abc = service.BinaryObjectFromString("abc", 65001);

// Calls start(callback), waits for the callback and returns {result, error}.
function wait(start) {
    var outcome = null;
    start(function (result, error) {
        check(outcome === null, "the callback is called once");
        check(this === arguments.callee, "this is the callback");
        outcome = { result: result, error: error };
    });
    check(outcome === null, "the method returns first");
    for (var i = 0; outcome === null && i < 3000; ++i) {
        WScript.Sleep(10);
    }
    check(outcome !== null, "the callback is called");
    return outcome;
}

function resultOf(start) {
    var outcome = wait(start);
    equal(outcome.error, undefined);
    return outcome.result;
}

function streamOf(binary) {
    var stream = service.CreateStream();
    stream.Write(binary, 0, binary.Size);
    stream.Seek(0);
    return stream;
}

var expected = { crc: 0x352441C2, md5: "900150983CD24FB0D6963F7D28E17F72",
    sha: "BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD" };
equal(abc.GetCrc32(), expected.crc);
equal(service.GetCrc32(abc, 0), expected.crc);
equal(service.GetCrc32(service.BinaryObjectFromHex("63"), service.GetCrc32(service.BinaryObjectFromHex("6162"))),
    expected.crc, "piecewise");
equal(service.GetMd5(abc).ToHexString(), expected.md5);
equal(service.GetSHA256(abc).ToHexString(), expected.sha);
equal(resultOf(function (done) { service.GetCrc32Async(abc, 0, done); }), expected.crc);
equal(resultOf(function (done) { service.GetMd5Async(abc, done); }).ToHexString(), expected.md5);
equal(resultOf(function (done) { service.GetSHA256Async(abc, done); }).ToHexString(), expected.sha);
equal(resultOf(function (done) { service.GetCrc32StreamAsync(streamOf(abc), done); }), expected.crc);
equal(resultOf(function (done) { service.GetMd5StreamAsync(streamOf(abc), done); }).ToHexString(), expected.md5);
equal(resultOf(function (done) { service.GetSHA256StreamAsync(streamOf(abc), done); }).ToHexString(), expected.sha);

// A token follows the operation, and one that is canceled stops it, at the end of the stream too.
var token = new ActiveXObject("VetrelCorvane2.OperationToken");
equal(token.Progress, 0);
resultOf(function (done) { service.GetCrc32StreamAsync(streamOf(abc), done, token); });
equal(token.Progress, 1);
equal(token.IsCanceled, false);
token.SetCanceled();
equal(token.IsCanceled, true);
var canceled = wait(function (done) { service.GetCrc32StreamAsync(service.CreateStream(), done, token); });
equal(canceled.result, undefined);
equal(canceled.error, "[35] Операция отменена");
throws(function () { service.GetCrc32StreamAsync(streamOf(abc), function () {}, service); });

// Positions, and numbers that are none.
var stream = streamOf(abc);
equal(stream.Seek(1), 1);
equal(stream.Read(10).ToString(65001), "bc");
equal(stream.Read(10).Size, 0);
equal(stream.Seek(-3, 2), 0);
equal(stream.Seek(1, 1), 1);
var badOffsets = [0.5, NaN, Infinity, -1, 4, 9007199254740994, -9007199254740994];
for (var i = 0; i < badOffsets.length; ++i) {
    throws(function () { stream.Seek(badOffsets[i]); }, "[23]", "Seek(" + badOffsets[i] + ")");
}
throws(function () { stream.Resize(-1); }, "[23]");
throws(function () { stream.Write(abc, 4, 1); }, "[23]");
equal(stream.Position, 1, "after failures");
equal(resultOf(function (done) { stream.SeekAndReadAsync(1, 1, done); }).ToString(65001), "b");
resultOf(function (done) { stream.SeekAndWriteAsync(3, abc, 1, 9, done); });
equal(stream.Size, 5);
equal(resultOf(function (done) { stream.SeekAndReadAsync(0, 9, done); }).ToString(65001), "abcbc");
equal(wait(function (done) { stream.SeekAndReadAsync(6, 1, done); }).error, "[23] Смещение превышает размер данных");
stream.Resize(2);
equal(stream.Position, 2);
stream.Close();
stream.Close();
throws(function () { stream.Read(1); }, "[14] Ошибка при чтении файла (поток закрыт)");
throws(function () { return stream.Size; }, "поток закрыт");

// Many at once; one callback starts another operation and pumps messages.
var left = 300;
var sum = 0;
for (var n = 0; n < 300; ++n) {
    service.GetCrc32Async(abc, 0, function (crc) {
        --left;
        sum += crc;
        if (left === 100) {
            ++left;
            service.GetCrc32Async(abc, 0, function () { --left; });
            WScript.Sleep(20);
        }
    });
}
for (var round = 0; left > 0 && round < 3000; ++round) {
    WScript.Sleep(10);
}
equal(left, 0);
equal(sum, 300 * expected.crc);

// The operation goes on when the script has let go of everything else.
(function () {
    var own = service.CreateStream();
    own.Resize(8 * 1024 * 1024);
    resultOf(function (done) {
        service.GetSHA256StreamAsync(own, done);
        own = null;
        CollectGarbage();
    });
})();
