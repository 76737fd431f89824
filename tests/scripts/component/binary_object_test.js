// BinaryObject and BinaryObjectService as JScript sees them: values, errors, arguments left out.
var service = create("BinaryObjectService");
var files = new ActiveXObject("Scripting.FileSystemObject");
var path = files.BuildPath(files.GetSpecialFolder(2), files.GetTempName());
var nothing = create("BinaryObject");
var abc = binaryOf("abc");
var cyrillicXml = "<?xml version=\"1.0\" encoding=\"windows-1251\"?><a>\u044F</a>";

function listOf(array) {
    return new VBArray(array).toArray().join(" ");
}

equalAll([
    ["Size", 4, hex("01020304").Size],
    ["Size called as a method, in another letter case", 4, hex("01020304").sIZE()],
    ["Size of a new object", 0, nothing.Size],
    ["GetByte", 255, hex("00FF").GetByte(1)],
    ["GetByte of undefined", 171, hex("AB").GetByte(undefined)],
    ["Equals, the same", true, hex("0A1b").Equals(hex("0a1B"))],
    ["Equals, shorter", false, hex("0A1B").Equals(hex("0A"))],
    ["Equals, both without bytes", true, hex("").Equals(nothing)],
    ["ToHexString", "0AFF", hex("0aFf").ToHexString()],
    ["ToHexString of nothing", "", nothing.ToHexString()],
    ["ToBase64 (RFC 4648, section 10)", "Zm9vYmE=", binaryOf("fooba").ToBase64()],
    ["BinaryObjectFromBase64", "ABCD", textOf(service.BinaryObjectFromBase64("QUJD\r\nRA=="))],
    ["BinaryObjectFromBase64 of undefined", 0, service.BinaryObjectFromBase64(undefined).Size],
    ["BinaryObjectFromString of nothing", 0, service.BinaryObjectFromString("", 1251).Size],
    ["BinaryObjectFromString", "FF", service.BinaryObjectFromString("\u044F", 1251).ToHexString()],
    ["ToString", "\u044F", hex("FF").ToString(1251)],
    ["BinaryObjectFromUnicodeString", "4F04", service.BinaryObjectFromUnicodeString("\u044F").ToHexString()],
    ["ToUnicodeString, an odd byte dropped", "\u044F", hex("4F0461").ToUnicodeString()],
    ["ToXmlString, by the encoding it names", cyrillicXml,
        service.BinaryObjectFromString(cyrillicXml, 1251).ToXmlString()],
    // Zeros inside are kept.
    ["BinaryObjectFromBase64, a zero", "414243", service.BinaryObjectFromBase64("QU\0JD").ToHexString()],
    ["BinaryObjectFromString, zeros", "00FF00", service.BinaryObjectFromString("\0\u044F\0", 1251).ToHexString()],
    ["ToString, zeros", "\0\u044F\0", hex("00FF00").ToString(1251)],
    ["BinaryObjectFromUnicodeString, a zero", "610000006200",
        service.BinaryObjectFromUnicodeString("a\0b").ToHexString()],
    ["ToUnicodeString, a zero", "a\0b", hex("610000006200").ToUnicodeString()],
    ["ToArray", "2 255", listOf(hex("0102FF").ToArray(1, 2))],
    ["ToArray, less than asked for", "3 4", listOf(hex("01020304").ToArray(2, 10))],
    ["ToArray from the end", "", listOf(hex("01020304").ToArray(4, 1))],
    ["ToArray of none, from anywhere", "", listOf(hex("01020304").ToArray(9, 0))],
    // RFC 1321, FIPS 180-4
    ["BinaryObject.GetCrc32", 0x352441C2, abc.GetCrc32()],
    ["GetCrc32, beginning left out", 0x352441C2, service.GetCrc32(abc)],
    ["GetCrc32, continued", 0x352441C2, service.GetCrc32(hex("63"), service.GetCrc32(hex("6162")))],
    ["GetMd5", "900150983CD24FB0D6963F7D28E17F72", service.GetMd5(abc).ToHexString()],
    ["GetSHA256", "BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD",
        service.GetSHA256(abc).ToHexString()]
]);

hex("00FF10").ToFile(path);
hex("AA").ToFile(path);
equal(service.BinaryObjectFromFile(path).ToHexString(), "AA", "a longer file is replaced");
files.DeleteFile(path);
abc.Reset();
equal(abc.Size, 0, "Size after Reset");

throws(function () { abc.GetByte(0); }, "0x80040212", "Байта с указанным индексом не существует");
fails(function () { hex("0a1"); }, "[12] Неверная длина HEX строки");
fails(function () { hex("0g"); }, "[11] Строка содержит недопустимый HEX символ");
fails(function () { hex("01020304").ToArray(5, 1); }, "[23] Смещение превышает размер данных");
fails(function () { hex("41").ToString(99999); }, "[7] Ошибка при конвертировании ANSI в Unicode (0x57:");
fails(function () { service.BinaryObjectFromString("a", 99999); },
    "[8] Ошибка при конвертировании Unicode в ANSI (0x57:");
fails(function () { service.BinaryObjectFromFile("no such file"); }, "[28] Ошибка при открытии файла (0x2:");
fails(function () { hex("41").ToFile("no such folder\\file"); }, "[28] Ошибка при открытии файла (0x3:");
fails(function () { hex("0a\0\0"); }, "[11] ");
fails(function () { service.BinaryObjectFromFile(""); }, "[40] Указан некорректный путь");
fails(function () { service.BinaryObjectFromFile("robust\0ness"); }, "[40] ");
fails(function () { hex("41").ToFile(""); }, "[40] Указан некорректный путь");
fails(function () { hex("41").ToFile("robust\0ness"); }, "[40] ");
fails(function () { nothing.ToXmlString(); }, "[701] Неверная структура XML");
throws(function () { abc.Equals(service); }, "0x80004002");
throws(function () { abc.Equals(null); }, mismatch);
throws(function () { abc.GetByte("word"); }, mismatch);
throws(function () { abc.Equals({ Size: 0 }); }, "0x80004002");
throws(function () { abc.Size = 2; }, "0x(80020003|800a01b6)");
