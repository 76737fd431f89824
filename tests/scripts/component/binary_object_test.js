// BinaryObject and BinaryObjectService as JScript sees them: values, errors, arguments left out.
var service = new ActiveXObject("VetrelCorvane2.BinaryObjectService");
var files = new ActiveXObject("Scripting.FileSystemObject");

function hex(text) {
    return service.BinaryObjectFromHex(text);
}

function listOf(array) {
    return new VBArray(array).toArray().join(" ");
}

var path = files.BuildPath(files.GetSpecialFolder(2), files.GetTempName());

// [what, expected, actual]
var values = [
    ["Size", 4, hex("01020304").Size],
    ["Size called as a method", 4, hex("01020304").Size()],
    ["Size of a new object", 0, new ActiveXObject("VetrelCorvane2.BinaryObject").Size],
    ["names in any letter case", 4, hex("01020304").sIZE],
    ["GetByte", 255, hex("00FF").GetByte(1)],
    ["GetByte of a text with digits", 255, hex("00FF").GetByte("1")],
    ["GetByte of undefined", 171, hex("AB").GetByte(undefined)],
    ["Equals, the same", true, hex("0A1b").Equals(hex("0a1B"))],
    ["Equals, shorter", false, hex("0A1B").Equals(hex("0A"))],
    ["Equals, both without bytes", true, hex("").Equals(new ActiveXObject("VetrelCorvane2.BinaryObject"))],
    ["hexadecimal", "0AFF", hex("0aFf").ToHexString()],
    ["hexadecimal of nothing", "", hex("").ToHexString()],
    // RFC 4648, section 10
    ["Base64", "Zm9vYmE=", service.BinaryObjectFromString("fooba", 65001).ToBase64()],
    ["from Base64 in lines", "ABCD", service.BinaryObjectFromBase64("QUJD\r\nRA==").ToString(65001)],
    ["from Base64, a lone character", 0, service.BinaryObjectFromBase64("Q").Size],
    ["from Base64, nothing of it", 0, service.BinaryObjectFromBase64("@@@").Size],
    ["from Base64, undefined", 0, service.BinaryObjectFromBase64(undefined).Size],
    ["UTF-8", "D18F", service.BinaryObjectFromString("\u044F", 65001).ToHexString()],
    ["Windows Cyrillic", "FF", service.BinaryObjectFromString("\u044F", 1251).ToHexString()],
    ["from Windows Cyrillic", "\u044F", hex("FF").ToString(1251)],
    ["zeros inside a text", "610062", service.BinaryObjectFromString("a\0b", 65001).ToHexString()],
    ["zeros inside bytes", 3, hex("610062").ToString(65001).length],
    ["UTF-16", "4F04", service.BinaryObjectFromUnicodeString("\u044F").ToHexString()],
    ["from UTF-16, an odd byte dropped", "\u044F", hex("4F0461").ToUnicodeString()],
    ["ToArray", "1 2 255", listOf(hex("0102FF").ToArray(0, 3))],
    ["ToArray, less than asked for", "3 4", listOf(hex("01020304").ToArray(2, 10))],
    ["ToArray of none", "", listOf(hex("01020304").ToArray(0, 0))],
    ["ToArray from the end", "", listOf(hex("01020304").ToArray(4, 1))],
    ["XML that names its encoding", "<?xml version=\"1.0\" encoding=\"windows-1251\"?><a>\u044F</a>",
        service.BinaryObjectFromString("<?xml version=\"1.0\" encoding=\"windows-1251\"?><a>\u044F</a>", 1251)
            .ToXmlString()]
];
for (var i = 0; i < values.length; ++i) {
    equal(values[i][2], values[i][1], values[i][0]);
}

// 57 bytes make a full line, which ends in a line break; one byte more begins another.
var line = new Array(58).join("00");
equal(hex(line).ToBase64(), new Array(77).join("A") + "\r\n", "Base64 of 57 bytes");
equal(hex(line + "00").ToBase64(), new Array(77).join("A") + "\r\nAA==", "Base64 of 58 bytes");

hex("00FF10").ToFile(path);
equal(service.BinaryObjectFromFile(path).ToHexString(), "00FF10", "through a file");
hex("AA").ToFile(path);
equal(service.BinaryObjectFromFile(path).ToHexString(), "AA", "a longer file is replaced");
files.DeleteFile(path);

var reset = hex("0102");
reset.Reset();
equal(reset.Size, 0, "Size after Reset");
throws(function () { reset.GetByte(0); }, "", "GetByte after Reset");

// [what, code, description, action]
var own = [
    ["a byte behind the last", "0x80040212", "Байта с указанным индексом не существует",
        function () { hex("01").GetByte(1); }],
    ["half a byte", "0x8004020c", "[12] Неверная длина HEX строки", function () { hex("0a1"); }],
    ["no digit", "0x8004020b", "[11] Строка содержит недопустимый HEX символ", function () { hex("0g"); }],
    ["a blank", "0x8004020b", "[11] Строка содержит недопустимый HEX символ", function () { hex("0a 1b"); }],
    ["an offset beyond the end", "0x80040217", "[23] Смещение превышает размер данных",
        function () { hex("01020304").ToArray(5, 1); }],
    ["a code page that does not exist", "0x80040207", "[7] Ошибка при конвертировании ANSI в Unicode (0x57:",
        function () { hex("41").ToString(99999); }],
    ["a file that does not exist", "0x8004021c", "[28] Ошибка при открытии файла (0x2:",
        function () { service.BinaryObjectFromFile("no such file"); }],
    ["a file without a name", "0x80040228", "[40] Указан некорректный путь", function () { hex("41").ToFile(""); }]
];
for (i = 0; i < own.length; ++i) {
    equal(codeOf(throws(own[i][3], own[i][2], own[i][0])), own[i][1], own[i][0]);
}

// Errors of the engine: what was passed cannot be what is asked for.
var refused = {
    "null for an object": function () { hex("01").Equals(null); },
    "undefined for an object": function () { hex("01").Equals(undefined); },
    "an array for an object": function () { hex("01").Equals([1]); },
    "another object": function () { hex("01").Equals(service); },
    "a script's object": function () { hex("01").Equals({ Size: 1 }); },
    "no index": function () { hex("01").GetByte(); },
    "an index below zero": function () { hex("01").GetByte(-1); },
    "an index that is no number": function () { hex("01").GetByte("one"); },
    "an argument too many": function () { hex("01").GetByte(0, 0); },
    "a member that does not exist": function () { hex("01").NoSuchMember(); },
    "a property that cannot be set": function () { hex("01").Size = 2; }
};
for (var what in refused) {
    throws(refused[what], undefined, what);
}
