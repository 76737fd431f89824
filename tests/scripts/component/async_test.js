// Streams, asynchronous calls and tokens as a script sees them.
var service = create("BinaryObjectService");
var abc = binaryOf("abc");
var crc = 0x352441C2; // of "abc"
values([
    ["later('service.GetCrc32Async(hex(\"63\"), service.GetCrc32(hex(\"6162\")), done)')", crc],
    ["later('service.GetCrc32StreamAsync(streamOf(abc), done)')", crc],
    ["later('service.GetMd5Async(abc, done)').Equals(service.GetMd5(abc))", true],
    ["later('service.GetMd5StreamAsync(streamOf(abc), done)').Equals(service.GetMd5(abc))", true],
    ["later('service.GetSHA256Async(abc, done)').Equals(service.GetSHA256(abc))", true],
    ["later('service.GetSHA256StreamAsync(streamOf(abc), done, undefined)').Equals(service.GetSHA256(abc))", true]
]);

// A token follows the operation, and one that is canceled stops it, at the end of the stream too.
var token = create("OperationToken");
later("service.GetCrc32StreamAsync(streamOf(abc), done, token)");
equal(token.Progress + " " + token.IsCanceled, "1 false");
token.SetCanceled();
equal(token.IsCanceled, true);
equal(later("service.GetCrc32StreamAsync(service.CreateStream(), done, token)"), "[35] Операция отменена");
var half = streamOf(hex("61626364"));
half.Seek(2);
token = create("OperationToken");
later("service.GetCrc32StreamAsync(half, done, token)");
equal(token.Progress, 0.5, "of the whole stream");
refusals([["service.GetCrc32StreamAsync(streamOf(abc), check, service)", "0x80004002"]]);

// Positions
var stream = streamOf(abc);
values([
    ["textOf(later('stream.SeekAndReadAsync(1, 2, done)'))", "bc"],
    ["later('stream.SeekAndWriteAsync(3, abc, 1, 9, done)')", undefined],
    ["textOf(contentOf(stream))", "abcbc"],
    ["stream.Resize(2), stream.Position", 2]
]);

// Seeking from the beginning, the position, the end, and what is none of them, stays inside.
stream = service.CreateStream();
stream.Resize(100);
var bases = [0, 40, 100, 0];
for (var origin = 0; origin < bases.length; ++origin) {
    values([["stream.Seek(40), stream.Seek(100 - bases[origin], origin)", 100], ["stream.Seek(40), stream.Seek(-bases[origin], origin)", 0]]);
    stream.Seek(40);
    refusals([["stream.Seek(-1 - bases[origin], origin)", "[23]"], ["stream.Seek(101 - bases[origin], origin)", "[23]"]]);
    equal(stream.Position, 40, "a refused move leaves the position");
}
stream.Close();
stream.Close();
refusals([
    ["stream.Read(1)", "[14] Ошибка при чтении файла (поток закрыт)"],
    ["stream.Position", "[15] "],
    ["stream.Seek(0)", "[26] "],
    ["stream.Write(abc, 0, 1)", "[17] "],
    ["stream.Resize(1)", "[17] "]
]);

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
