// Files and folders as a script sees them: what is done, and what is refused, with the system's number.
var disk = create("FileSystemService");
var folder = disk.GetTempFolder() + "проба " + new Date().getTime() + Math.random();

function path(name) {
    return folder + "\\" + name;
}
function namesIn(mask) {
    var entries = JSON.parse(disk.List(folder, mask)), names = [];
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
        ["file.Read(1).Size", 0],
        ["file.Flush(), file.Close(), file.Close()", undefined]
    ]);

    // Whole files replace content and keep attributes.
    disk.SetAttributes(there, 2);
    hex("AA").ToFile(there);
    equal(contentAt(there) + (disk.GetAttributes(there) & 2), "AA2");
    disk.SetAttributes(there, 128);

    for (var keep = 0; keep < 2; ++keep) {
        var temporary = keep ? disk.CreateTempFile(true) : disk.CreateTempFile();
        temporary.Write(hex("010203"), 0, 3);
        equal(contentAt(temporary.Path), "010203", "while it is open");
        temporary.Close();
        equal(disk.FileExists(temporary.Path), keep === 1);
    }

    // Copying, moving, listing
    var absent = path("no.bin"), moved = path("moved.txt"), copy = path("a\\b\\copy.txt");
    values([
        ["disk.Delete(temporary.Path), disk.FileExists(temporary.Path)", false],
        ["disk.Copy(there, copy), disk.Move(copy, moved), disk.FileExists(there)", true],
        ["disk.FileExists(copy)", false],
        ["namesIn('*.txt')", "moved.txt"],
        ["namesIn('*')", "a,moved.txt"],
        ["disk.List(folder) === disk.List(folder, '*')", true],
        ["namesIn('*.none')", ""],
        ["disk.FolderExists(path('a'))", true],
        ["disk.FolderExists(there)", false]
    ]);
    refusals([
        ["file.Read(1)", "[14] Ошибка при чтении файла (поток закрыт)"],
        ["disk.OpenFile(absent)", "[28] Ошибка при открытии файла (0x2:"],
        ["disk.OpenFile(path('no\\\\a.bin'))", "[28] Ошибка при открытии файла (0x3:"],
        ["disk.OpenFile(there, 0xC0000000, 1)", "[28] Ошибка при открытии файла (0x50:"],
        ["disk.OpenFile('')", "[40] Указан некорректный путь (0x7b:"],
        ["disk.OpenFile(there + '\\0x')", "[40] Указан некорректный путь (0x7b:"],
        ["disk.OpenFile(there).Write(hex('01'), 0, 1)", "[17] Ошибка при записи в файл (0x5:"],
        ["disk.Copy(moved, there)", "[17] Ошибка при записи в файл (0x50:"],
        ["disk.Move(moved, there)", "[38] Ошибка при перемещении файла (0xb7:"],
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
    var deep = folder + new Array(9).join("\\" + new Array(51).join("я"));
    var forms = [deep, path("c/d/e"), path("f\\g\\"), path(".")];
    for (var i = 0; i < forms.length; ++i) {
        disk.CreateFolder(forms[i]);
        equal(disk.FolderExists(forms[i]), true, forms[i]);
    }
    hex("010203").ToFile(deep + "\\a");
    disk.Copy(deep + "\\a", deep + "\\b");
    disk.Move(deep + "\\b", deep + "\\c");
    equal(contentAt(deep + "\\c") + JSON.parse(disk.List(deep)).length, "0102032");
} finally {
    disk.DeleteFolder(folder, true);
}
equal(disk.FolderExists(folder), false, "what was deleted");
