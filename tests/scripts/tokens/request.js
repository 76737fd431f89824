// Requests on a token. arguments: the reader's name, a folder: request.der and path.txt are made there
var provider = create("CryptoService").GetDefaultCryptoProvider();
var bytes = create("BinaryObjectService");
var slot = WScript.Arguments(0);
var folder = WScript.Arguments(1) + "/";
var name = hex("300F310D300B06035504030C0454657374"); // CN=Test
var usage = hex("300D300B0603551D0F040403020780"); // keyUsage: digitalSignature
var attribute = hex("300A06032A030431030C0178"); // 1.2.3.4: UTF8String x

function failsPlainly(action, text) {
    throws(action, "0x80040200", text);
    throws(action, "0x80040200", text); // nothing of the first call is left in the way
}

throws(function () { provider.CreateCertificationRequestGOST(slot, "0000", name, usage); }, "0x800405e8", "C_Login: CKR_PIN_INCORRECT");
failsPlainly(function () { provider.CreateCertificationRequestGOST("ACS 0", "12345678", name, usage); }, "Не определен путь до модуля pkcs11 ");
failsPlainly(function () { provider.CreateCertificationRequestGOST("ARDS 0", "12345678", name, usage); }, "Не найден каталог установки плагина");
throws(function () { provider.CreateCertificationRequestGOST(slot, "\udc00", name, usage); }, "0x80040208", "[8] ");
failsPlainly(function () { provider.CreateCertificationRequestGOST("Aktiv 9", "12345678", name, usage); }, "Не найден указанный слот");
throws(function () { provider.CreateCertificationRequestGOST(slot, "12345678", slot, usage); }, mismatch);
equal(create("CryptoService").GetTokenContainers(slot).replace(/\s/g, ""), "[]");

var first = JSON.parse(provider.CreateCertificationRequestGOSTV2(slot, "12345678", name, usage, null));
var result = JSON.parse(provider.CreateCertificationRequestGOSTV2(slot, "12345678", name, usage, attribute));
check(/^S-1-/.test(result.sid), result.sid);
equal(result.path.indexOf("\\\\.\\" + slot + "\\"), 0);
check(result.path !== first.path, "each request has keys of its own");
equal(JSON.parse(create("CryptoService").GetTokenContainers(slot)).length, 2);
bytes.BinaryObjectFromBase64(result.request).ToFile(folder + "request.der");
binaryOf(result.path).ToFile(folder + "path.txt");
