// Places, sizes and counts: what the reference says of them is what happens, and what it refuses moves nothing.
var data = hex("0102030405");
var stream = streamOf(data);

// Of what was written, whose result is nothing.
function positionAfter(nothing) {
    equal(nothing, undefined);
    return stream.Position;
}
function lengthOf(array) {
    return new VBArray(array).toArray().length;
}
var refused = ["-1", "2.5", "-0.5", "9007199254740994", "-9007199254740994", "NaN", "Infinity"];
var beyond = refused.concat("5e9", "4294967295", "4294967296");

// What each way gives for a number N, and that it refuses others.
function compare(ways, rows, others, error) {
    for (var w = 0; w < ways.length; ++w) {
        for (var number in rows) {
            stream.Seek(0);
            values([[ways[w].replace("N", number), rows[number]]]);
        }
        for (var i = 0; i < others.length; ++i) {
            stream.Seek(1);
            refusals([[ways[w].replace("N", others[i]), error || "[23] "]]);
            equal(stream.Position + " " + stream.Size, "1 5", ways[w]);
        }
    }
}
// How many of five bytes; and from which byte on: how many of them follow.
compare(["stream.Read(N).Size", "later('stream.ReadAsync(N, done)').Size", "later('stream.SeekAndReadAsync(0, N, done)').Size",
    "positionAfter(stream.Write(data, 0, N))", "positionAfter(later('stream.WriteAsync(data, 0, N, done)'))",
    "positionAfter(later('stream.SeekAndWriteAsync(0, data, 0, N, done)'))", "lengthOf(data.ToArray(0, N))"],
{ 0: 0, 3: 3, "new String(4)": 4, 4294967295: 5, 5e9: 5, 9007199254740992: 5 }, refused);
compare(["positionAfter(stream.Write(data, N, 5))", "positionAfter(later('stream.WriteAsync(data, N, 5, done)'))",
    "positionAfter(later('stream.SeekAndWriteAsync(0, data, N, 5, done)'))", "lengthOf(data.ToArray(N, 5))"],
{ 0: 5, 3: 2, 5: 0 }, refused);
compare(["stream.Write(data, N, 1)"], {}, ["4294967301"]); // an offset is not cut to 32 bits
compare(["stream.Seek(N)"], { 0: 0, 5: 5 }, beyond);
compare(["stream.Resize(N), stream.Size"], { 7: 7, 5: 5 }, refused);
compare(["data.GetByte(N)"], { 4: 5 }, beyond.concat("5"), "0x80040212");
refusals([["stream.SeekAndReadAsync(2.5, 1, function () {})", "[23] "]]);
equal(later("stream.SeekAndReadAsync(-1, 1, done)").substr(0, 5), "[23] ");
