// Places, sizes and counts: what the reference says of them is what happens, and what it refuses moves nothing.
var service = create("BinaryObjectService");
var data = service.BinaryObjectFromHex("0102030405");
var stream = service.CreateStream();
stream.Write(data, 0, 5);

function asynchronous(start) {
    return wait(function (done) { start(done); });
}
// Of what was written, whose result is nothing.
function positionAfter(nothing) {
    equal(nothing, undefined);
    return stream.Position;
}
// Each way to say how much: what of five bytes that count gives.
var counted = {
    Read: function (count) { return stream.Read(count).Size; },
    ReadAsync: function (count) { return asynchronous(function (done) { stream.ReadAsync(count, done); }).Size; },
    SeekAndReadAsync: function (count) {
        return asynchronous(function (done) { stream.SeekAndReadAsync(0, count, done); }).Size;
    },
    Write: function (count) { return positionAfter(stream.Write(data, 0, count)); },
    WriteAsync: function (count) {
        return positionAfter(asynchronous(function (done) { stream.WriteAsync(data, 0, count, done); }));
    },
    SeekAndWriteAsync: function (count) {
        return positionAfter(asynchronous(function (done) { stream.SeekAndWriteAsync(0, data, 0, count, done); }));
    },
    ToArray: function (count) { return new VBArray(data.ToArray(0, count)).toArray().length; }
};
// Each way to say from which byte on: how many of five bytes follow.
var begun = {
    Write: function (offset) { return positionAfter(stream.Write(data, offset, 5)); },
    WriteAsync: function (offset) {
        return positionAfter(asynchronous(function (done) { stream.WriteAsync(data, offset, 5, done); }));
    },
    SeekAndWriteAsync: function (offset) {
        return positionAfter(asynchronous(function (done) { stream.SeekAndWriteAsync(0, data, offset, 5, done); }));
    },
    ToArray: function (offset) { return new VBArray(data.ToArray(offset, 5)).toArray().length; }
};
var counts = [[0, 0], [3, 3], ["4", 4], [4294967295, 5], [5e9, 5], [9007199254740992, 5]];
var offsets = [[0, 5], [3, 2], [5, 0]];
var refused = [-1, 2.5, -0.5, 9007199254740994, -9007199254740994, NaN, Infinity];

function compare(ways, rows, others) {
    for (var name in ways) {
        for (var i = 0; i < rows.length; ++i) {
            stream.Seek(0);
            equal(ways[name](rows[i][0]), rows[i][1], name + " " + rows[i][0]);
        }
        for (i = 0; i < others.length; ++i) {
            stream.Seek(0);
            fails(function () { ways[name](others[i]); }, "[23] ", name + " " + others[i]);
            equal(stream.Position, 0, name + " " + others[i]);
        }
    }
}
compare(counted, counts, refused);
compare(begun, offsets, refused);
equal(stream.Size, 5);
fails(function () { stream.Write(data, 4294967301, 1); }, "[23] ", "an offset is not cut to 32 bits");

var noByte = refused.concat([5, 4294967296, 5e9]);
for (var i = 0; i < noByte.length; ++i) {
    throws(function () { data.GetByte(noByte[i]); }, "0x80040212", "Байта с указанным индексом", "GetByte " + noByte[i]);
}

var places = refused.concat([5e9, 4294967295]);
for (i = 0; i < places.length; ++i) {
    stream.Seek(1);
    fails(function () { stream.Seek(places[i]); }, "[23] ", "Seek " + places[i]);
    if (i < refused.length) {
        fails(function () { stream.Resize(places[i]); }, "[23] ", "Resize " + places[i]);
    }
    equal(stream.Position, 1);
    equal(stream.Size, 5);
}
fails(function () { stream.SeekAndReadAsync(2.5, 1, function () {}); }, "[23] ");
equal(wait(function (done) { stream.SeekAndReadAsync(-1, 1, done); }).substr(0, 5), "[23] ");
stream.Resize(7);
equal(stream.Size, 7);
