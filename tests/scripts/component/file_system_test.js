// Files and folders as a script sees them: what is done, and what is refused, with the system's number.
var disk = create("FileSystemService");
var bytes = create("BinaryObjectService");
var folder = disk.GetTempFolder() + "проба " + new Date().getTime() + Math.random();
var readingAndWriting = 0xC0000000;

function path(name) {
    return folder + "\\" + name;
}

function namesIn(mask) {
    var entries = JSON.parse(disk.List(folder, mask));
    var names = [];
    for (var i = 0; i < entries.length; ++i) {
        names.push(entries[i].name);
    }
    return names.sort().join();
}

disk.CreateFolder(path("a\\b"));
disk.CreateFolder(path("a\\b"));
try {
    // A file: new, for nobody else, and above 4 GiB, which takes no room where the file system knows sparse files.
    var there = path("a\\файл.txt");
    var file = disk.OpenFile(there, readingAndWriting, 1, 0);
    fails(function () { disk.OpenFile(there); }, "[28] Ошибка при открытии файла (0x20:");
    file.Resize(5000000000);
    equalAll([
        ["Name", "файл.txt", file.Name],
        ["Path", there, file.Path],
        ["Size", 5000000000, file.Size],
        ["GetLength", 5000000000, disk.GetLength(there)],
        ["List", 5000000000, JSON.parse(disk.List(path("a"), "*.txt"))[0].size],
        ["Seek", 4999999999, file.Seek(-1, 2)]
    ]);
    fails(function () { file.Seek(5000000001); }, "[23] ");
    file.Resize(3);
    equal(file.Position, 3, "the position moves to the new end");
    file.Seek(0);
    file.Write(hex("0102030405"), 0, 5);
    file.Seek(1);
    equal(file.Read(100).ToHexString(), "02030405");
    equal(file.Read(1).Size, 0);
    file.Flush();
    file.Close();
    file.Close();
    fails(function () { file.Read(1); }, "[14] Ошибка при чтении файла (поток закрыт)");

    // Whole files replace content and keep attributes.
    disk.SetAttributes(there, 2);
    hex("AA").ToFile(there);
    equal(bytes.BinaryObjectFromFile(there).ToHexString(), "AA");
    equal(disk.GetAttributes(there) & 2, 2);
    hex("").ToFile(there);
    equal(disk.GetLength(there), 0);
    disk.SetAttributes(there, 128);

    // Temporary files
    for (var keep = 0; keep < 2; ++keep) {
        file = keep ? disk.CreateTempFile(true) : disk.CreateTempFile();
        file.Write(hex("010203"), 0, 3);
        equal(bytes.BinaryObjectFromFile(file.Path).ToHexString(), "010203", "while it is open");
        file.Close();
        equal(disk.FileExists(file.Path), keep === 1);
    }
    disk.Delete(file.Path);
    equal(disk.FileExists(file.Path), false);

    // Copying, moving, listing
    disk.Copy(there, path("a\\b\\copy.txt"));
    disk.Move(path("a\\b\\copy.txt"), path("moved.txt"));
    equalAll([
        ["what was copied", true, disk.FileExists(there)],
        ["what was moved", false, disk.FileExists(path("a\\b\\copy.txt"))],
        ["List with a mask", "moved.txt", namesIn("*.txt")],
        ["List of all", "a,moved.txt", namesIn("*")],
        ["List without a mask", disk.List(folder, "*"), disk.List(folder)],
        ["List of nothing", "", namesIn("*.none")],
        ["FolderExists", true, disk.FolderExists(path("a"))],
        ["FolderExists of a file", false, disk.FolderExists(there)]
    ]);

    // What cannot be done
    var absent = path("no.bin");
    var refused = [
        ["[28] Ошибка при открытии файла (0x2:", function () { disk.OpenFile(absent); }],
        ["[28] Ошибка при открытии файла (0x3:", function () { disk.OpenFile(path("no\\a.bin")); }],
        ["[28] Ошибка при открытии файла (0x50:", function () { disk.OpenFile(there, readingAndWriting, 1); }],
        ["[40] Указан некорректный путь (0x7b:", function () { disk.OpenFile(""); }],
        ["[40] Указан некорректный путь (0x7b:", function () { disk.OpenFile(there + "\0x"); }],
        ["[17] Ошибка при записи в файл (0x5:", function () { disk.OpenFile(there).Write(hex("01"), 0, 1); }],
        ["[17] Ошибка при записи в файл (0x50:", function () { disk.Copy(path("moved.txt"), there); }],
        ["[38] Ошибка при перемещении файла (0xb7:", function () { disk.Move(path("moved.txt"), there); }],
        ["[38] Ошибка при перемещении файла (0x2:", function () { disk.Move(absent, path("c"), true); }],
        ["[39] Ошибка при удалении файла (0x2:", function () { disk.Delete(absent); }],
        ["[44] Ошибка при удалении директории (0x91:", function () { disk.DeleteFolder(folder); }],
        ["[27] Ошибка при чтении аттрибута файла (0x2:", function () { disk.GetAttributes(absent); }],
        ["[40] Указан некорректный путь (0x7b:", function () { disk.List(folder, "..\\*"); }],
        ["[40] Указан некорректный путь (0x10b:", function () { disk.List(there); }],
        ["[28] Ошибка при открытии файла (0x2:", function () { disk.Copy(absent, path("c")); }],
        ["[15] Ошибка при определении размера файла", function () { disk.GetLength(folder); }]
    ];
    for (var i = 0; i < refused.length; ++i) {
        fails(refused[i][1], refused[i][0]);
    }
    disk.Copy(path("moved.txt"), there, true);
    disk.Move(path("moved.txt"), there, true);
    equal(namesIn("*"), "a");

    // Paths of more than 400 characters, and forms of paths
    var deep = folder;
    for (i = 0; i < 8; ++i) {
        deep += "\\" + new Array(51).join(String.fromCharCode(1072 + i));
    }
    disk.CreateFolder(deep);
    equal(disk.FolderExists(deep), true);
    hex("010203").ToFile(deep + "\\файл.txt");
    disk.Copy(deep + "\\файл.txt", deep + "\\b.txt");
    disk.Move(deep + "\\b.txt", deep + "\\c.dat");
    equal(bytes.BinaryObjectFromFile(deep + "\\c.dat").ToHexString(), "010203");
    equal(JSON.parse(disk.List(deep)).length, 2);
    var forms = ["c/d/e", "f\\g\\", "."];
    for (i = 0; i < forms.length; ++i) {
        disk.CreateFolder(path(forms[i]));
        equal(disk.FolderExists(path(forms[i])), true, forms[i]);
    }
} finally {
    disk.DeleteFolder(folder, true);
}
equal(disk.FolderExists(folder), false, "what was deleted");
