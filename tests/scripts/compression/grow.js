// Adds two entries, one after the other, to an archive, which is the argument.
var READ_AND_WRITE = 0x80000000 + 0x40000000;
var OPEN_EXISTING = 3;
var file = create("FileSystemService").OpenFile(WScript.Arguments(0), READ_AND_WRITE, OPEN_EXISTING, 0);
var archive = create("CompressionService").OpenZipArchive(file);
archive.Add("one", binaryOf("1"));
archive.Add("two", binaryOf("2"));
file.Close();
