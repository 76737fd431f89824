// ZipArchive as a script sees it: lists, names, folders on disk.
var service = create("CompressionService");
var bytes = create("BinaryObjectService");
var disk = create("FileSystemService");
var data = "../data/zip/";
var greeting = "дерево/папка/привет.txt";

function archiveOf(path) {
    return service.OpenZipArchive(streamOf(bytes.BinaryObjectFromFile(path)));
}

var work = disk.GetTempFolder() + "zip" + new Date().getTime() + Math.random();
disk.CreateFolder(work);
try {
    // What another program packed.
    var archive = archiveOf(data + "info-zip.zip");
    var python = JSON.parse(archiveOf(data + "python.zip").Entries);
    equalAll([
        ["Count", 5, archive.Count],
        ["Entries, a file",
            '{"crc":4154817985,"date":"2024-02-03T04:05:06","directory":false,"encrypted":false,' +
                '"index":2,"name":"deflated.txt","packedSize":20,"size":900}', JSON.stringify(python[2])],
        ["Entries, a folder", true, python[0].directory],
        ["Entries, encrypted", true,
            JSON.parse(archiveOf(data + "info-zip-encrypted.zip").Entries)[0].encrypted],
        ["Find", 4, archive.Find(greeting)],
        ["Find a folder", 3, archive.Find("дерево/папка")],
        ["Extract by index", "Привет\n", textOf(archive.Extract(4))],
        ["Extract by name", "Привет\n", textOf(archive.Extract("дерево\\папка\\привет.txt"))],
        ["ExtractAsync", "Привет\n", textOf(wait(function (done) { archive.ExtractAsync(4, done); }))]
    ]);
    var absent = ["нет такого", "", "привет.txt", "Дерево/", "дерево/пуст"];
    for (var i = 0; i < absent.length; ++i) {
        fails(function () { archive.Extract(absent[i]); }, "[114] ", absent[i]);
    }
    fails(function () { archive.Extract(5); }, "[104] ");
    fails(function () { archive.Extract(-1); }, "[104] ");
    equal(archive.Extract(2, 5000).Size, 5000);
    fails(function () { archive.Extract(2, 4999); }, "[10] ");
    fails(function () { archive.ExtractStream(2, bytes.CreateStream(), 4999); }, "[10] ");
    equal(wait(function (done) { archive.ExtractAsync(2, done, 4999); }).substr(0, 5), "[10] ");

    // Everything into a folder that is not there yet; once more only when told to write over it.
    var folder = work + "\\a\\b";
    archive.ExtractAll(folder);
    equal(textOf(bytes.BinaryObjectFromFile(folder + "\\дерево\\папка\\привет.txt")), "Привет\n");
    equal(disk.GetLength(folder + "\\дерево\\zeros.bin"), 5000);
    equal(disk.GetLength(folder + "\\дерево\\пусто"), 0);
    fails(function () { archive.ExtractAll(folder); }, "[28] ");
    archive.ExtractAll(folder, 0, true);
    fails(function () { archive.ExtractAll(work + "\\c", 5012); }, "[10] ");
    equal(disk.FolderExists(work + "\\c"), false, "nothing is written above the limit");
    var token = create("OperationToken");
    equal(wait(function (done) { archive.ExtractAllAsync(work + "\\d", done, 5013, false, token); }), undefined);
    equal(token.Progress, 1);
    equal(wait(function (done) { archive.ExtractAllAsync(folder, done); }).substr(0, 5), "[28] ");

    // An old file, hidden too, stays until its successor is complete.
    var packed = service.PKZip(binaryOf("new")).ToHexString();
    var crc = packed.substr(28, 8); // APPNOTE.TXT 4.3.7; the directory repeats it
    var old = work + "\\old\\file";
    disk.CreateFolder(work + "\\old");
    binaryOf("old").ToFile(old);
    disk.SetAttributes(old, 2);
    var damaged = service.OpenZipArchive(streamOf(hex(packed.split(crc).join("00000000"))));
    fails(function () { damaged.ExtractAll(work + "\\old", 0, true); },
        "[102] Ошибка при распаковке ZIP (file)");
    equal(textOf(bytes.BinaryObjectFromFile(old)), "old");
    service.OpenZipArchive(streamOf(hex(packed))).ExtractAll(work + "\\old", 0, true);
    equal(textOf(bytes.BinaryObjectFromFile(old)), "new");
    equal(JSON.parse(disk.List(work + "\\old")).length, 1, "nothing temporary is left");

    // Tokens of operations on bytes.
    token = create("OperationToken");
    wait(function (done) { archive.ExtractAsync(2, done, 0, token); });
    equal(token.Progress, 1);
    token.SetCanceled();
    equal(wait(function (done) { archive.ExtractAsync(2, done, 0, token); }).substr(0, 5), "[35] ");
    equal(wait(function (done) { archive.AddAsync("x", binaryOf("x"), done, token); }).substr(0, 5), "[35] ");
    equal(archive.Count, 5);

    // Archives that would write elsewhere, or one file over another.
    var impossible = [
        ["unsafe-0", "недопустимое имя элемента архива: ../evil"],
        ["long-part", "недопустимое имя элемента архива: " + new Array(257).join("x")],
        ["two-cases", "элемент с таким именем уже есть в архиве: папка/ФАЙЛ"],
        ["file-and-folder", "элемент с таким именем уже есть в архиве: GOOD.txt/file"]
    ];
    for (i = 0; i < impossible.length; ++i) {
        var unsafe = archiveOf(data + impossible[i][0] + ".zip");
        fails(function () { unsafe.ExtractAll(work + "\\unsafe"); },
            "[103] Ошибка при распаковке ZIP: неверный формат входных данных (" + impossible[i][1] + ")",
            impossible[i][0]);
        equal(disk.FolderExists(work + "\\unsafe"), false, "nothing is written");
    }
    equal(wait(function (done) { unsafe.ExtractAllAsync(work + "\\unsafe", done, 0, false, token); })
        .substr(0, 5), "[35] ", "canceled before the names are looked through");
    fails(function () { archiveOf(data + "info-zip-encrypted.zip").ExtractAll(work + "\\unsafe"); },
        "[102] Ошибка при распаковке ZIP (элемент архива зашифрован: first.txt)");

    // Names as long as they may be, of which each prefix is a folder, take little memory: 8 of them, not 2 GB.
    var deep = service.OpenZipArchive(bytes.CreateStream());
    for (i = 0; i < 8; ++i) {
        deep.Add(i + new Array(1000).join("/" + new Array(31).join("a")), binaryOf("deep"));
    }
    fails(function () { deep.ExtractAll(work + "\\unsafe", 31); }, "[10] ");
    fails(function () { deep.Add(new Array(1002).join("a/") + "a", binaryOf("deep")); }, "[113] ");

    // A folder packed and restored.
    var stream = bytes.CreateStream();
    service.Compress(folder, stream);
    var again = service.OpenZipArchive(stream);
    equal(again.Count, 5);
    equal(textOf(again.Extract(greeting)), "Привет\n");
    equal(JSON.parse(again.Entries)[again.Find("дерево/zeros.bin")].date, "2024-02-03T04:05:06");
    fails(function () { service.Compress(folder, stream); }, "[100] ");
    equal(wait(function (done) { service.CompressAsync(work + "\\none", bytes.CreateStream(), done); })
        .substr(0, 5), "[27] ");

    // Adding.
    again.Add("added.txt", binaryOf("added"));
    var refused = ["added.txt", "", "/", "дерево\\пусто", "../a", "C:a", "nul", "a\0b", "ADDED.TXT",
        "added.txt/a", "дерево", "under/", "a\uD800", "\uDC00"];
    for (i = 0; i < refused.length; ++i) {
        fails(function () { again.Add(refused[i], binaryOf("again")); }, "[113] ", refused[i]);
    }
    wait(function (done) { again.AddAsync("later.txt", binaryOf("later"), done); });
    again.AddStream("stream.txt", streamOf(binaryOf("from a stream")));
    token = create("OperationToken");
    wait(function (done) { again.AddStreamAsync("later stream.txt", streamOf(binaryOf("more")), done, token); });
    equal(token.Progress, 1);
    again.AddFolder(folder + "\\дерево\\папка", "под");
    wait(function (done) { again.AddFolderAsync(folder + "\\дерево\\пусто", done); });
    again = service.OpenZipArchive(stream);
    var output = bytes.CreateStream();
    again.ExtractStream("added.txt", output);
    wait(function (done) { again.ExtractStreamAsync("later.txt", output, done); });
    equalAll([
        ["Count", 11, again.Count],
        ["AddStream", "from a stream", textOf(again.Extract("stream.txt"))],
        ["AddStreamAsync", "more", textOf(again.Extract("later stream.txt"))],
        ["AddFolder with a prefix", "Привет\n", textOf(again.Extract("под/привет.txt"))],
        ["AddFolderAsync without one", 0, again.Extract("пусто").Size],
        ["ExtractStream, ExtractStreamAsync", "addedlater", textOf(contentOf(output))]
    ]);

    // A folder with the archive itself and with files that others hold open, under prefixes of all kinds.
    var own = work + "\\own";
    disk.CreateFolder(own);
    var written = disk.OpenFile(own + "\\written", 0xC0000000, 2, 3);
    written.Write(binaryOf("still open"), 0, 10);
    var file = disk.OpenFile(own + "\\archive.zip", 0xC0000000, 2, 0);
    service.Compress(own, file);
    var inside = service.OpenZipArchive(file);
    var prefixes = ["under\\", "a/./b\\c", ".", "under\\\\"];
    inside.AddFolder(own, prefixes[0]);
    inside.AddFolder(own, prefixes[1]);
    fails(function () { inside.AddFolder(own, prefixes[2]); },
        "[113] Ошибка при добавлении файла в ZIP архив (элемент с таким именем уже есть в архиве: " + own +
            "\\written)");
    fails(function () { inside.AddFolder(own, prefixes[3]); }, "[113] ");
    fails(function () { inside.AddFolder(own + "\\ARCHIVE.zip"); }, "[113] ");
    var locked = disk.OpenFile(own + "\\locked", 0xC0000000, 2, 0);
    throws(function () { inside.AddFolder(own, "locked"); }, "0x8004021c");
    try {
        inside.AddFolder(own, "locked");
    } catch (error) {
        check(error.message.indexOf(": " + own + "\\locked)") > 0, error.message);
    }
    equalAll([
        ["Count", 3, inside.Count],
        ["Compress", "still open", textOf(inside.Extract("written"))],
        ["AddFolder, a prefix that ends in \\", "still open", textOf(inside.Extract("under/written"))],
        ["AddFolder, a prefix with .", "still open", textOf(inside.Extract("a/b/c/written"))]
    ]);
    locked.Close();
    written.Close();
    file.Close();

    // Closed, and never opened; the stream stays open, and then is gone.
    var other = service.OpenZipArchive(stream);
    again.Close();
    again.Close();
    fails(function () { again.Extract(0); }, "[112] ");
    fails(function () { again.Count; }, "[112] ");
    fails(function () { create("ZipArchive").Entries; }, "[112] ");
    equal(textOf(other.Extract("added.txt")), "added");
    stream.Close();
    fails(function () { other.Add("a", binaryOf("a")); }, "[112] ");
    fails(function () { service.OpenZipArchive(stream); }, "[112] ");
} finally {
    disk.DeleteFolder(work, true);
}
