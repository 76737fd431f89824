// What does not come onto a token. arguments: the folder with path.txt, an answer, the same damaged
var provider = create("CryptoService").GetDefaultCryptoProvider();
var bytes = create("BinaryObjectService");
var path = textOf(bytes.BinaryObjectFromFile(WScript.Arguments(0) + "/path.txt"));
var answer = bytes.BinaryObjectFromFile(WScript.Arguments(1)).ToBase64();
var damaged = bytes.BinaryObjectFromFile(WScript.Arguments(2));

function install(response, where, pin) {
    return function () { provider.InstallCertificateResponseGOST(response, where, pin); };
}

throws(install(answer, path.substr(1), "12345678"), "0x80040200", "Не верный формат пути до ключевого контейнера");
throws(install(answer, path, "1"), "0x800405e8", "C_Login: CKR_PIN_INCORRECT");
var responses = [damaged.ToBase64(), damaged.ToHexString(), answer.substr(0, 400), "no certificate"];
for (var i = 0; i < responses.length; ++i) {
    fails(install(responses[i], path, "12345678"), "[324] ", responses[i]);
}
