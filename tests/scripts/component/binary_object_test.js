// BinaryObject and BinaryObjectService as JScript sees them: values, errors, arguments left out.
var service = create("BinaryObjectService");
var files = new ActiveXObject("Scripting.FileSystemObject");
var path = files.BuildPath(files.GetSpecialFolder(2), files.GetTempName());
var nothing = create("BinaryObject");
var abc = binaryOf("abc");
var xml = "<?xml version=\"1.0\" encoding=\"windows-1251\"?><a>\u044F</a>";

function listOf(array) {
    return new VBArray(array).toArray().join(" ");
}

values([
    ["hex('01020304').Size", 4],
    ["hex('01020304').sIZE()", 4], // a property called as a method, in another letter case
    ["nothing.Size", 0],
    ["hex('00FF').GetByte(1)", 255],
    ["hex('AB').GetByte(undefined)", 171],
    ["hex('0A1b').Equals(hex('0a1B'))", true],
    ["hex('0A1B').Equals(hex('0A'))", false],
    ["hex('').Equals(nothing)", true],
    ["hex('0aFf').ToHexString()", "0AFF"],
    ["nothing.ToHexString()", ""],
    ["binaryOf('fooba').ToBase64()", "Zm9vYmE="], // RFC 4648, section 10
    ["textOf(service.BinaryObjectFromBase64('QUJD\\r\\nRA=='))", "ABCD"],
    ["service.BinaryObjectFromBase64(undefined).Size", 0],
    ["service.BinaryObjectFromString('', 1251).Size", 0],
    ["hex('FF').ToString(1251)", "\u044F"],
    ["hex('4F0461').ToUnicodeString()", "\u044F"], // an odd byte is dropped
    ["service.BinaryObjectFromString(xml, 1251).ToXmlString() === xml", true],
    // Zeros inside are kept.
    ["service.BinaryObjectFromBase64('QU\\0JD').ToHexString()", "414243"],
    ["service.BinaryObjectFromString('\\0\u044F\\0', 1251).ToHexString()", "00FF00"],
    ["hex('00FF00').ToString(1251)", "\0\u044F\0"],
    ["service.BinaryObjectFromUnicodeString('a\\0b').ToHexString()", "610000006200"],
    ["hex('610000006200').ToUnicodeString()", "a\0b"],
    ["listOf(hex('0102FF').ToArray(1, 2))", "2 255"],
    ["listOf(hex('01020304').ToArray(2, 10))", "3 4"],
    ["listOf(hex('01020304').ToArray(4, 1))", ""],
    ["listOf(hex('01020304').ToArray(9, 0))", ""],
    // RFC 1321, FIPS 180-4
    ["abc.GetCrc32()", 0x352441C2],
    ["service.GetCrc32(abc)", 0x352441C2],
    ["service.GetCrc32(hex('63'), service.GetCrc32(hex('6162')))", 0x352441C2],
    ["service.GetMd5(abc).ToHexString()", "900150983CD24FB0D6963F7D28E17F72"],
    ["service.GetSHA256(abc).ToHexString()", "BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD"]
]);

hex("00FF10").ToFile(path);
hex("AA").ToFile(path);
equal(service.BinaryObjectFromFile(path).ToHexString(), "AA", "a longer file is replaced");
files.DeleteFile(path);

refusals([
    ["hex('01').GetByte(1)", "0x80040212", "Байта с указанным индексом не существует"],
    ["hex('0a1')", "[12] Неверная длина HEX строки"],
    ["hex('0a\\0\\0')", "[11] Строка содержит недопустимый HEX символ"],
    ["hex('01020304').ToArray(5, 1)", "[23] Смещение превышает размер данных"],
    ["hex('41').ToString(99999)", "[7] Ошибка при конвертировании ANSI в Unicode (0x57:"],
    ["service.BinaryObjectFromString('a', 99999)", "[8] Ошибка при конвертировании Unicode в ANSI (0x57:"],
    ["service.BinaryObjectFromFile('no such file')", "[28] Ошибка при открытии файла (0x2:"],
    ["hex('41').ToFile('no such folder\\\\file')", "[28] Ошибка при открытии файла (0x3:"],
    ["service.BinaryObjectFromFile('')", "[40] Указан некорректный путь"],
    ["service.BinaryObjectFromFile('robust\\0ness')", "[40] "],
    ["hex('41').ToFile('')", "[40] Указан некорректный путь"],
    ["hex('41').ToFile('robust\\0ness')", "[40] "],
    ["nothing.ToXmlString()", "[701] Неверная структура XML"],
    ["abc.Equals(service)", "0x80004002"],
    ["abc.Equals({ Size: 0 })", "0x80004002"],
    ["abc.Equals(null)", mismatch],
    ["abc.GetByte('word')", mismatch],
    ["abc.Size = 2", "0x(80020003|800a01b6)"]
]);

// Looking whether an object has a method does not call it; "unknown" is what JScript makes of such a member.
var stream = streamOf(abc);
var token = create("OperationToken");
values([
    ["typeof abc.Reset + typeof abc.ToString + typeof abc.ToHexString", "unknownunknownunknown"],
    ["typeof create('Certificate').Uninstall", "unknown"],
    ["typeof abc.Size + typeof abc.NoSuchMember", "numberundefined"]
]);
var looks = ["!!abc.Reset", "if (stream.Close) 1", "'x' + create('CertificateCollection').Clear", "var f = token.SetCanceled"];
for (var i = 0; i < looks.length; ++i) {
    try {
        eval(looks[i]);
    } catch (error) {
        check(error.number !== 0, "the engine refuses to read it");
    }
}
equal(abc.Size + " " + stream.Position + " " + token.IsCanceled, "3 0 false");
abc.Reset();
equal(abc.Size, 0, "Size after Reset");
