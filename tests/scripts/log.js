// What log-test reads about in the log. arguments: a document, a file to write, the log
var service = create("BinaryObjectService");
var bytes = service.BinaryObjectFromString("Секретный код", 1251);
service.BinaryObjectFromHex(bytes.ToHexString());
bytes.ToString(1251);
service.GetMd5(bytes);
var stream = service.CreateStream();
stream.Write(bytes, 0, 13);
stream.Seek(3);
var file = create("FileSystemService").OpenFile(WScript.Arguments(1), 0xC0000000, 4);
file.Write(bytes, 0, 13);
file.Close();
later("service.GetSHA256StreamAsync(stream, done)");
stream.Seek(3);
later("create('CompressionService').GZipStreamAsync(stream, service.CreateStream(), done)");
create("CompressionService").OpenZipArchive(service.CreateStream()).Add("имя.txt", bytes);
equal(later("stream.SeekAndReadAsync(14, 1, done)"), "[23] Смещение превышает размер данных");
bytes.ToFile(WScript.Arguments(1));
equal(service.BinaryObjectFromFile(WScript.Arguments(1)).Size, 13);
service.BinaryObjectFromString("<a>Фамилия Иванов Имя Пётр Отчество Сергеевич</a>", 1251).ToXmlString();
refusals([
    ["service.BinaryObjectFromHex('zz')", "[11] "],
    ["create('GuiService').ShowOpenDialog('{')", "[202] "],
    ["create('GuiService').ShowSaveDialog(new Array(261).join('n'), '')", "0x800405e8", "File name greater then MAX_PATH"]
]);
var token = create("OperationToken");
token.SetCanceled();
equal(later("service.GetCrc32StreamAsync(stream, done, token)"), "[35] Операция отменена");

// Every operation on messages
var crypto = create("CryptoService");
var document = service.BinaryObjectFromFile(WScript.Arguments(0));
var key = crypto.FindCertificate('{"name": "Second Signer", "storeName": "My", "hasPrivateKeyOnly": true}');
var other = binaryOf("another document");

var out;
function made(call) {
    out = service.CreateStream();
    later(call);
    out.Seek(0);
    return out;
}

var signature = crypto.Sign(document, key, true);
var attached = crypto.AddSignerToSignature(crypto.AttachedSign(document, key), null, key);
crypto.AddSignerToSignature(signature, document, key);
crypto.VerifySignature(document, signature);
crypto.VerifyAttachedSignature(attached);
crypto.GetCertificatesFromSignature(attached);
crypto.GetContentFromSignature(attached);
crypto.InspectSignature(attached);
var message = crypto.Encrypt(document, [key, key]);
crypto.Decrypt(message);
var stream = made("crypto.SignStreamAsync(streamOf(document), out, key, true, done)");
made("crypto.VerifyStreamAttachedSignatureAsync(stream, done)");
made("crypto.VerifyStreamSignatureAsync(streamOf(document), signature, done)");
made("crypto.ExtractCertificatesFromSignature(streamOf(attached), done)");
made("crypto.ExtractContentFromSignature(streamOf(attached), out, done)");
made("crypto.InspectStreamSignatureAsync(streamOf(attached), null, done)");
stream = made("crypto.EncryptStreamAsync(streamOf(document), out, key, done)");
made("crypto.DecryptStreamAsync(stream, out, done)");
crypto.VerifyCertificate(key, 0);
crypto.GetCryptoProvidersInfo();

// What fails tells of itself, not of the document.
refusals([
    ["crypto.RawSign(document, key)", "[334] "],
    ["crypto.VerifySignature(other, signature)", "[305] "],
    ["crypto.AddSignerToSignature(document, document, key)", "[331] "],
    ["crypto.GetContentFromSignature(document)", "[307] "],
    ["crypto.Decrypt(document)", "[316] "]
]);

// Others may read the log, rename it and delete it while it is written.
check(service.BinaryObjectFromFile(WScript.Arguments(2)).Size > 0, "the log is read while it is open");
var files = create("FileSystemService");
files.Move(WScript.Arguments(2), WScript.Arguments(2) + ".old", true);
files.Move(WScript.Arguments(2) + ".old", WScript.Arguments(2), true);
