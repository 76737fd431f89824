// Places, sizes and counts: what the reference says of them is what happens, and what it refuses moves nothing.
var service = create("BinaryObjectService");
var data = service.BinaryObjectFromHex("0102030405");
var stream = service.CreateStream();
stream.Write(data, 0, 5);

// Of what was written, whose result is nothing.
function positionAfter(nothing) {
    equal(nothing, undefined);
    return stream.Position;
}
function lengthOf(array) {
    return new VBArray(array).toArray().length;
}
// Each way to say how much: what of five bytes N gives; and from which byte on: how many of them follow.
var counted = ["stream.Read(N).Size", "later('stream.ReadAsync(N, done)').Size", "later('stream.SeekAndReadAsync(0, N, done)').Size",
    "positionAfter(stream.Write(data, 0, N))", "positionAfter(later('stream.WriteAsync(data, 0, N, done)'))",
    "positionAfter(later('stream.SeekAndWriteAsync(0, data, 0, N, done)'))", "lengthOf(data.ToArray(0, N))"];
var begun = ["positionAfter(stream.Write(data, N, 5))", "positionAfter(later('stream.WriteAsync(data, N, 5, done)'))",
    "positionAfter(later('stream.SeekAndWriteAsync(0, data, N, 5, done)'))", "lengthOf(data.ToArray(N, 5))"];
var refused = ["-1", "2.5", "-0.5", "9007199254740994", "-9007199254740994", "NaN", "Infinity"];

function compare(ways, rows) {
    for (var w = 0; w < ways.length; ++w) {
        for (var number in rows) {
            stream.Seek(0);
            values([[ways[w].replace("N", number), rows[number]]]);
        }
        for (var i = 0; i < refused.length; ++i) {
            stream.Seek(0);
            refusals([[ways[w].replace("N", refused[i]), "[23] "]]);
            equal(stream.Position, 0, ways[w]);
        }
    }
}
compare(counted, { 0: 0, 3: 3, "new String(4)": 4, 4294967295: 5, 5e9: 5, 9007199254740992: 5 });
compare(begun, { 0: 5, 3: 2, 5: 0 });
equal(stream.Size, 5);
refusals([["stream.Write(data, 4294967301, 1)", "[23] "]]); // an offset is not cut to 32 bits
stream.Seek(1);
var beyond = refused.concat("5e9", "4294967295", "4294967296");
for (var i = 0; i < beyond.length; ++i) {
    refusals([
        ["data.GetByte(" + beyond[i] + ")", "0x80040212", "Байта с указанным индексом"],
        ["stream.Seek(" + beyond[i] + ")", "[23] "],
        ["stream." + (i < refused.length ? "Resize(" : "Seek(") + beyond[i] + ")", "[23] "]
    ]);
}
equal(stream.Position + " " + stream.Size, "1 5");
refusals([["data.GetByte(5)", "0x80040212"], ["stream.SeekAndReadAsync(2.5, 1, function () {})", "[23] "]]);
equal(later("stream.SeekAndReadAsync(-1, 1, done)").substr(0, 5), "[23] ");
stream.Resize(7);
equal(stream.Size, 7);
