// Asks for a certificate for a new key, and installs the authority's answer.
//
//     cscript //nologo certificate_request.js request CONTAINER NAME FILE
//     cscript //nologo certificate_request.js install ANSWER FILE
//
// "request" makes the key container CONTAINER and writes the request to FILE, which goes to the authority, and where the
// key lies to FILE.path. NAME is the subject: "CN=Ivan Ivanov,SNILS=12345678901,C=RU". "install" takes the certificate
// that came back, in whichever form, and the same FILE; from then on the certificate signs.
//
// The address of the host must be a trusted site, for example name://cscript.exe.

var crypto = new ActiveXObject("VetrelCorvane2.CryptoService");
var service = new ActiveXObject("VetrelCorvane2.BinaryObjectService");
var utf8 = 65001;

// The members of an object of plain texts, where the engine has no JSON.
function member(json, name) {
    var found = new RegExp('"' + name + '"\\s*:\\s*("([^"\\\\]|\\\\.)*"|true|false)').exec(json);
    return found ? eval("(" + found[1] + ")") : null;
}

function request(container, name, file) {
    var subject = crypto.EncodeDistinguishedName(name);
    var extensions = crypto.EncodeExtensions(
        '{"keyUsage": ["digitalSignature", "nonRepudiation"], "extendedKeyUsage": ["clientAuth", "emailProtection"]}');
    // A key for exchange: an answer is only installed for such a one.
    var result = crypto.CreateCertificationRequestEx(container, 1, subject, extensions);
    var bytes = service.BinaryObjectFromBase64(member(result, "request"));
    bytes.ToFile(file);
    service.BinaryObjectFromString(member(result, "path"), utf8).ToFile(file + ".path");

    var description = crypto.DecodeCertificationRequest(bytes);
    WScript.Echo("Request: " + member(description, "subject"));
    WScript.Echo("    its signature is good: " + member(description, "signatureValid"));
    WScript.Echo("    the key lies in " + member(result, "path"));
}

function install(answer, file) {
    var path = service.BinaryObjectFromFile(file + ".path").ToString(utf8);
    var bytes = service.BinaryObjectFromFile(answer);
    // A file is text or bytes; as Base64 of its bytes DER is an answer, too.
    var response = bytes.GetByte(0) === 0x30 && bytes.GetByte(1) > 0x7F ? bytes.ToBase64() : bytes.ToString(utf8);
    var certificate = crypto.InstallCertificateResponseEx(response, path, "My");
    WScript.Echo("Installed: " + certificate.Subject);

    var document = service.BinaryObjectFromString("Hello", utf8);
    var signers = crypto.VerifySignature(document, crypto.Sign(document, certificate, false));
    WScript.Echo("    signs as " + signers.Item(0).CommonName);
}

var words = WScript.Arguments;
if (words.length === 4 && words(0) === "request") {
    request(words(1), words(2), words(3));
} else if (words.length === 3 && words(0) === "install") {
    install(words(1), words(2));
} else {
    WScript.Echo("usage: certificate_request.js request CONTAINER NAME FILE | install ANSWER FILE");
    WScript.Quit(2);
}
