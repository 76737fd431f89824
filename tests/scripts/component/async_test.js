// Streams, asynchronous calls and tokens as a script sees them.
var service = create("BinaryObjectService");
var abc = binaryOf("abc");
var crc = 0x352441C2; // of "abc"
var md5 = service.GetMd5(abc).ToHexString();
var sha = service.GetSHA256(abc).ToHexString();

equalAll([
    ["GetCrc32Async", crc, wait(function (done) { service.GetCrc32Async(abc, 0, done); })],
    ["GetCrc32Async, continued", crc,
        wait(function (done) { service.GetCrc32Async(hex("63"), service.GetCrc32(hex("6162")), done); })],
    ["GetCrc32StreamAsync", crc, wait(function (done) { service.GetCrc32StreamAsync(streamOf(abc), done); })],
    ["GetMd5Async", md5, wait(function (done) { service.GetMd5Async(abc, done); }).ToHexString()],
    ["GetMd5StreamAsync", md5,
        wait(function (done) { service.GetMd5StreamAsync(streamOf(abc), done); }).ToHexString()],
    ["GetSHA256Async", sha, wait(function (done) { service.GetSHA256Async(abc, done); }).ToHexString()],
    ["GetSHA256StreamAsync", sha,
        wait(function (done) { service.GetSHA256StreamAsync(streamOf(abc), done, undefined); }).ToHexString()]
]);

// A token follows the operation, and one that is canceled stops it, at the end of the stream too.
var token = create("OperationToken");
equal(token.Progress, 0);
wait(function (done) { service.GetCrc32StreamAsync(streamOf(abc), done, token); });
equal(token.Progress, 1);
equal(token.IsCanceled, false);
token.SetCanceled();
equal(token.IsCanceled, true);
equal(wait(function (done) { service.GetCrc32StreamAsync(service.CreateStream(), done, token); }),
    "[35] Операция отменена");
var half = streamOf(hex("61626364"));
half.Seek(2);
token = create("OperationToken");
wait(function (done) { service.GetCrc32StreamAsync(half, done, token); });
equal(token.Progress, 0.5, "of the whole stream");
throws(function () { service.GetCrc32StreamAsync(streamOf(abc), check, service); }, "0x80004002");
throws(function () { service.GetCrc32StreamAsync(abc, check); }, "0x80004002");

// Positions
var stream = streamOf(abc);
equal(stream.Seek(1), 1);
equal(textOf(stream.Read(10)), "bc");
equal(stream.Read(10).Size, 0);
stream.Seek(1);
fails(function () { stream.Write(abc, 4, 1); }, "[23]");
stream.Write(abc, 3, 1);
equal(stream.Position, 1, "after failures");
equal(textOf(wait(function (done) { stream.ReadAsync(1, done); })), "b");
equal(textOf(wait(function (done) { stream.SeekAndReadAsync(0, 2, done); })), "ab");
equal(stream.Position, 2);
stream.Write(abc, 2, 1);
wait(function (done) { stream.WriteAsync(abc, 1, 1, done); });
wait(function (done) { stream.SeekAndWriteAsync(3, abc, 1, 9, done); });
equal(stream.Size, 5);
equal(textOf(contentOf(stream)), "abcbc");
equal(wait(function (done) { stream.SeekAndReadAsync(6, 1, done); }), "[23] Смещение превышает размер данных");
stream.Resize(2);
equal(stream.Position, 2);
stream.Close();
stream.Close();
fails(function () { stream.Read(1); }, "[14] Ошибка при чтении файла (поток закрыт)");
fails(function () { stream.Size; }, "[15] ");
fails(function () { stream.Position; }, "[15] ");
fails(function () { stream.Seek(0); }, "[26] ");
fails(function () { stream.Write(abc, 0, 1); }, "[17] ");
fails(function () { stream.Resize(1); }, "[17] ");

// Seeking from the beginning, the position, the end, and what is none of them, stays inside.
stream = service.CreateStream();
stream.Resize(100);
var bases = [0, 40, 100, 0, 0];
for (var origin = 0; origin < bases.length; ++origin) {
    var inside = [0, 7, 40, 100];
    for (var i = 0; i < inside.length; ++i) {
        stream.Seek(40);
        equal(stream.Seek(inside[i] - bases[origin], origin), inside[i], "from " + origin);
    }
    stream.Seek(40);
    fails(function () { stream.Seek(-1 - bases[origin], origin); }, "[23]", "from " + origin);
    fails(function () { stream.Seek(101 - bases[origin], origin); }, "[23]", "from " + origin);
    equal(stream.Position, 40, "a refused move leaves the position");
}

// Many at once; one callback starts another operation and pumps messages, another one throws.
var left = 300;
var sum = 0;
for (var n = 0; n < 300; ++n) {
    service.GetCrc32Async(abc, 0, function (each) {
        --left;
        sum += each;
        if (left === 50) {
            throw new Error("of the callback");
        }
        if (left === 100) {
            ++left;
            service.GetCrc32Async(abc, 0, function () { --left; });
            WScript.Sleep(20);
        }
    });
}
waitUntil(function () { return left === 0; });
equal(sum, 300 * crc);

// The operation goes on when the script has let go of everything else.
wait(function (done) {
    var own = service.CreateStream();
    own.Resize(8 * 1024 * 1024);
    service.GetSHA256StreamAsync(own, done);
    own = null;
    CollectGarbage();
});
