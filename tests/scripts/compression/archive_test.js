// ZipArchive as a script sees it: lists, names, folders on disk.
var service = create("CompressionService");
var disk = create("FileSystemService");
var data = "../data/zip/";
var greeting = "дерево/папка/привет.txt";

function archiveOf(name) {
    return service.OpenZipArchive(streamOf(bytes.BinaryObjectFromFile(data + name + ".zip")));
}

var work = disk.GetTempFolder() + "zip" + new Date().getTime() + Math.random();
disk.CreateFolder(work);
try {
    // What another program packed.
    var archive = archiveOf("info-zip");
    var python = JSON.parse(archiveOf("python").Entries);
    table("archive");

    // Everything into a folder that is not there yet; once more only when told to write over it.
    var folder = work + "\\a\\b", other = work + "\\c";
    archive.ExtractAll(folder);
    archive.ExtractAll(folder, 0, true);
    var token = create("OperationToken");
    refusals([["archive.ExtractAll(folder)", "[28] "], ["archive.ExtractAll(other, 5012)", "[10] "]]);
    values([
        ["textOf(bytes.BinaryObjectFromFile(folder + '\\\\дерево\\\\папка\\\\привет.txt'))", "Привет\n"],
        ["disk.GetLength(folder + '\\\\дерево\\\\zeros.bin')", 5000],
        ["disk.GetLength(folder + '\\\\дерево\\\\пусто')", 0],
        ["disk.FolderExists(other)", false], // nothing is written above the limit
        ["later('archive.ExtractAllAsync(other, done, 5013, false, token)')", undefined],
        ["token.Progress", 1],
        ["later('archive.ExtractAllAsync(folder, done)').substr(0, 5)", "[28] "]
    ]);

    // An old file, hidden too, stays until its successor is complete.
    var packed = service.PKZip(binaryOf("new")).ToHexString();
    var old = work + "\\old", file = old + "\\file";
    disk.CreateFolder(old);
    binaryOf("old").ToFile(file);
    disk.SetAttributes(file, 2);
    // The sum (APPNOTE.TXT 4.3.7), which the directory repeats.
    var damaged = service.OpenZipArchive(streamOf(hex(packed.split(packed.substr(28, 8)).join("00000000"))));
    refusals([["damaged.ExtractAll(old, 0, true)", "[102] Ошибка при распаковке ZIP (file)"]]);
    equal(textOf(bytes.BinaryObjectFromFile(file)), "old");
    service.OpenZipArchive(streamOf(hex(packed))).ExtractAll(old, 0, true);
    equal(textOf(bytes.BinaryObjectFromFile(file)), "new");
    equal(JSON.parse(disk.List(old)).length, 1, "nothing temporary is left");

    // Dates, of the calendar and none, as they are packed (APPNOTE.TXT 4.4.6) in the place of 1980-01-01.
    var dates = { "00005D58": "2024-02-29T00:00:00", "7DBF9F59": "2024-12-31T23:59:58", // and 2023-02-29, 2024-02-30,
        "00005D56": "", "00005E58": "", "00009F58": "", "00000158": "", "00C02158": "" }; // 2024-04-31, 2024-00-01, 24:00
    for (var date in dates) {
        archive = service.OpenZipArchive(streamOf(hex(packed.split("00002100").join(date))));
        equal(JSON.parse(archive.Entries)[0].date, dates[date], date);
    }

    // Tokens of operations on bytes, in the last of these archives.
    token.SetCanceled();
    values([
        ["later('archive.ExtractAsync(0, done, 0, token)').substr(0, 5)", "[35] "],
        ["later('archive.AddAsync(\"x\", binaryOf(\"x\"), done, token)').substr(0, 5)", "[35] "],
        ["archive.Count", 1]
    ]);

    // Archives that would write elsewhere, or one file over another.
    var unsafe = work + "\\unsafe", wrong = "[103] Ошибка при распаковке ZIP: неверный формат входных данных (";
    refusals([
        ["archiveOf('unsafe-0').ExtractAll(unsafe)", wrong + "недопустимое имя элемента архива: ../evil)"],
        ["archiveOf('long-part').ExtractAll(unsafe)", wrong + "недопустимое имя элемента архива: " + new Array(257).join("x") + ")"],
        ["archiveOf('two-cases').ExtractAll(unsafe)", wrong + "элемент с таким именем уже есть в архиве: папка/ФАЙЛ)"],
        ["archiveOf('file-and-folder').ExtractAll(unsafe)", wrong + "элемент с таким именем уже есть в архиве: GOOD.txt/file)"],
        ["archiveOf('info-zip-encrypted').ExtractAll(unsafe)", "[102] "]
    ]);
    equal(disk.FolderExists(unsafe), false, "nothing is written");

    // Names as long as they may be, of which each prefix is a folder, take little memory: 8 of them, not 2 GB.
    var deep = service.OpenZipArchive(bytes.CreateStream());
    for (var i = 0; i < 8; ++i) {
        deep.Add(i + new Array(1000).join("/" + new Array(31).join("a")), binaryOf("deep"));
    }
    refusals([
        ["deep.ExtractAll(unsafe, 31)", "[10] "],
        ["deep.Add(new Array(1001).join('a/') + 'a', binaryOf('deep'))", "[113] "],
        ["deep.Add(new Array(161).join(new Array(200).join('я') + '/') + 'a', binaryOf('deep'))", "[113] "] // 32,001 letters
    ]);
    deep.Add(new Array(160).join(new Array(200).join("я") + "/") + new Array(201).join("я"), binaryOf("deep"));

    // What is added, to a folder packed.
    var stream = bytes.CreateStream();
    service.Compress(folder, stream);
    var again = service.OpenZipArchive(stream);
    again.Add("added.txt", binaryOf("added"));
    refusals([
        ["service.Compress(folder, stream)", "[100] "],
        ["again.Add('a\\0b', binaryOf('again'))", "[113] "],
        ["again.Add('a\uD800', binaryOf('again'))", "[113] "],
        ["again.Add('\uDC00', binaryOf('again'))", "[113] "],
        ["again.ExtractStream(0, stream)", "[114] "] // into the archive itself
    ]);
    equal(later("service.CompressAsync(work + '\\\\none', bytes.CreateStream(), done)").substr(0, 5), "[27] ");
    later("again.AddAsync('later.txt', binaryOf('later'), done)");
    again.AddStream("stream.txt", streamOf(binaryOf("from a stream")));
    token = create("OperationToken");
    later("again.AddStreamAsync('later stream.txt', streamOf(binaryOf('more')), done, token)");
    equal(token.Progress, 1);
    again.AddFolder(folder + "\\дерево\\папка", "под");
    later("again.AddFolderAsync(folder + '\\\\дерево\\\\пусто', done)");
    again = service.OpenZipArchive(stream);
    var output = bytes.CreateStream();
    again.ExtractStream("added.txt", output);
    later("again.ExtractStreamAsync('later.txt', output, done)");
    values([
        ["again.Count", 11],
        ["textOf(again.Extract('stream.txt'))", "from a stream"],
        ["textOf(again.Extract('later stream.txt'))", "more"],
        ["textOf(again.Extract('под/привет.txt'))", "Привет\n"],
        ["again.Extract('пусто').Size", 0],
        ["textOf(contentOf(output))", "addedlater"]
    ]);

    // A folder with the archive itself and with files that others hold open, under prefixes.
    var own = work + "\\own";
    disk.CreateFolder(own);
    var written = disk.OpenFile(own + "\\written", 0xC0000000, 2, 3);
    written.Write(binaryOf("still open"), 0, 10);
    file = disk.OpenFile(own + "\\archive.zip", 0xC0000000, 2, 0);
    service.Compress(own, file);
    var inside = service.OpenZipArchive(file);
    inside.AddFolder(own, "under\\");
    var there = "[113] Ошибка при добавлении файла в ZIP архив (элемент с таким именем уже есть в архиве: " + own + "\\written)";
    refusals([
        ["inside.AddFolder(own, '.')", there],
        ["inside.AddFolder(own, 'under\\\\\\\\')", "[113] "],
        ["inside.AddFolder(own + '\\\\ARCHIVE.zip')", "[113] "]
    ]);
    var locked = disk.OpenFile(own + "\\locked", 0xC0000000, 2, 0);
    equal(later("inside.AddFolderAsync(own, done, 'locked')").replace(/ \(0x.*: /, " "), "[28] Ошибка при открытии файла " + own + "\\locked)");
    values([
        ["inside.Count", 2],
        ["textOf(inside.Extract('written'))", "still open"],
        ["textOf(inside.Extract('under/written'))", "still open"]
    ]);
    locked.Close();
    written.Close();
    file.Close();

    // Closed, and never opened; the stream stays open, and then is gone.
    other = service.OpenZipArchive(stream);
    again.Close();
    again.Close();
    refusals([["again.Extract(0)", "[112] "], ["again.Count", "[112] "], ["create('ZipArchive').Entries", "[112] "]]);
    equal(textOf(other.Extract("added.txt")), "added");
    stream.Close();
    refusals([["other.Add('a', binaryOf('a'))", "[112] "], ["service.OpenZipArchive(stream)", "[112] "]]);
} finally {
    disk.DeleteFolder(work, true);
}
