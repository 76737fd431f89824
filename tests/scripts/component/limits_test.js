// Big buffers and their end: 64 bits hold what 32 bits refuse without harm.
var service = create("BinaryObjectService");
var is64 = JSON.parse(create("About").Diagnose()).bitness === 64;
var noMemory = "0x(8007000e|800a0007)";
var mebibyte = 1024 * 1024;

// An array of all the bytes would need 16 or 24 bytes for each, which 32 bits cannot count.
var stream = service.CreateStream();
stream.Resize(270 * mebibyte);
var big = contentOf(stream);
refusals([["big.ToArray(0, stream.Size)", noMemory]]);
equal(new VBArray(big.ToArray(stream.Size - 2, 4294967295)).toArray().length, 2);

// A stream for which 32 bits run out of addresses on the way is then as it was.
var size = 3 * 1024 * mebibyte;
stream = streamOf(hex("0102"));
// And more of a file than memory holds.
var file = create("FileSystemService").CreateTempFile();
file.Resize(5e9);
file.Seek(0);
if (is64) {
    stream.Resize(size);
} else {
    refusals([["stream.Resize(size)", noMemory], ["file.Read(3e9)", noMemory]]);
}
file.Close();
stream.Seek(-1, 2);
stream.Write(hex("FFEE"), 0, 2);
values([
    ["stream.Size", is64 ? size + 1 : 3],
    ["stream.Seek(-2, 2)", is64 ? size - 1 : 1],
    ["stream.Read(10).ToHexString()", "FFEE"],
    ["stream.Seek(0)", 0],
    ["stream.Read(1).ToHexString()", "01"]
]);
stream.Close();
