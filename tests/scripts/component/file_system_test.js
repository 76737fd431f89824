// Files and folders as a script sees them: what is done, and what is refused, with the system's number.
var disk = create("FileSystemService");
var bytes = create("BinaryObjectService");
var folder = disk.GetTempFolder() + "проба " + new Date().getTime() + Math.random();

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

function contentAt(path) {
    return bytes.BinaryObjectFromFile(path).ToHexString();
}

disk.CreateFolder(path("a\\b"));
disk.CreateFolder(path("a\\b"));
try {
    // A file: new, for nobody else, and above 4 GiB, which takes no room where the file system knows sparse files.
    var there = path("a\\файл.txt");
    var file = disk.OpenFile(there, 0xC0000000, 1, 0);
    file.Resize(5000000000);
    refusals([["disk.OpenFile(there)", "[28] Ошибка при открытии файла (0x20:"], ["file.Seek(5000000001)", "[23] "]]);
    values([
        ["file.Name", "файл.txt"],
        ["file.Path === there", true],
        ["file.Size", 5000000000],
        ["disk.GetLength(there)", 5000000000],
        ["JSON.parse(disk.List(path('a'), '*.txt'))[0].size", 5000000000],
        ["file.Seek(-1, 2)", 4999999999],
        ["file.Resize(3), file.Position", 3], // it moves to the new end
        ["file.Seek(0)", 0],
        ["file.Write(hex('0102030405'), 0, 5)", undefined],
        ["file.Seek(1)", 1],
        ["file.Read(100).ToHexString()", "02030405"],
        ["file.Read(1).Size", 0]
    ]);
    file.Flush();
    file.Close();
    file.Close();
    refusals([["file.Read(1)", "[14] Ошибка при чтении файла (поток закрыт)"]]);

    // Whole files replace content and keep attributes.
    disk.SetAttributes(there, 2);
    hex("AA").ToFile(there);
    equal(contentAt(there), "AA");
    equal(disk.GetAttributes(there) & 2, 2);
    hex("").ToFile(there);
    equal(disk.GetLength(there), 0);
    disk.SetAttributes(there, 128);

    for (var keep = 0; keep < 2; ++keep) {
        file = keep ? disk.CreateTempFile(true) : disk.CreateTempFile();
        file.Write(hex("010203"), 0, 3);
        equal(contentAt(file.Path), "010203", "while it is open");
        file.Close();
        equal(disk.FileExists(file.Path), keep === 1);
    }
    disk.Delete(file.Path);
    equal(disk.FileExists(file.Path), false);

    // Copying, moving, listing
    disk.Copy(there, path("a\\b\\copy.txt"));
    disk.Move(path("a\\b\\copy.txt"), path("moved.txt"));
    values([
        ["disk.FileExists(there)", true],
        ["disk.FileExists(path('a\\\\b\\\\copy.txt'))", false],
        ["namesIn('*.txt')", "moved.txt"],
        ["namesIn('*')", "a,moved.txt"],
        ["disk.List(folder) === disk.List(folder, '*')", true],
        ["namesIn('*.none')", ""],
        ["disk.FolderExists(path('a'))", true],
        ["disk.FolderExists(there)", false]
    ]);
    var absent = path("no.bin"), moved = path("moved.txt");
    refusals([
        ["disk.OpenFile(absent)", "[28] Ошибка при открытии файла (0x2:"],
        ["disk.OpenFile(path('no\\\\a.bin'))", "[28] Ошибка при открытии файла (0x3:"],
        ["disk.OpenFile(there, 0xC0000000, 1)", "[28] Ошибка при открытии файла (0x50:"],
        ["disk.OpenFile('')", "[40] Указан некорректный путь (0x7b:"],
        ["disk.OpenFile(there + '\\0x')", "[40] Указан некорректный путь (0x7b:"],
        ["disk.OpenFile(there).Write(hex('01'), 0, 1)", "[17] Ошибка при записи в файл (0x5:"],
        ["disk.Copy(moved, there)", "[17] Ошибка при записи в файл (0x50:"],
        ["disk.Move(moved, there)", "[38] Ошибка при перемещении файла (0xb7:"],
        ["disk.Move(absent, path('c'), true)", "[38] Ошибка при перемещении файла (0x2:"],
        ["disk.Delete(absent)", "[39] Ошибка при удалении файла (0x2:"],
        ["disk.DeleteFolder(folder)", "[44] Ошибка при удалении директории (0x91:"],
        ["disk.GetAttributes(absent)", "[27] Ошибка при чтении аттрибута файла (0x2:"],
        ["disk.List(folder, '..\\\\*')", "[40] Указан некорректный путь (0x7b:"],
        ["disk.List(there)", "[40] Указан некорректный путь (0x10b:"],
        ["disk.Copy(absent, path('c'))", "[28] Ошибка при открытии файла (0x2:"],
        ["disk.GetLength(folder)", "[15] Ошибка при определении размера файла"]
    ]);
    disk.Copy(moved, there, true);
    disk.Move(moved, there, true);
    equal(namesIn("*"), "a");

    // Paths of more than 400 characters, and forms of paths
    var deep = folder;
    for (var i = 0; i < 8; ++i) {
        deep += "\\" + new Array(51).join(String.fromCharCode(1072 + i));
    }
    disk.CreateFolder(deep);
    hex("010203").ToFile(deep + "\\файл.txt");
    disk.Copy(deep + "\\файл.txt", deep + "\\b.txt");
    disk.Move(deep + "\\b.txt", deep + "\\c.dat");
    equal(contentAt(deep + "\\c.dat"), "010203");
    equal(JSON.parse(disk.List(deep)).length, 2);
    var forms = [deep, path("c/d/e"), path("f\\g\\"), path(".")];
    for (i = 0; i < forms.length; ++i) {
        disk.CreateFolder(forms[i]);
        equal(disk.FolderExists(forms[i]), true, forms[i]);
    }
} finally {
    disk.DeleteFolder(folder, true);
}
equal(disk.FolderExists(folder), false, "what was deleted");
