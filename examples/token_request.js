// Asks for a certificate for new keys on a token, and writes the authority's answer onto it.
//
//     cscript //nologo token_request.js list
//     cscript //nologo token_request.js request READER PIN NAME FILE
//     cscript //nologo token_request.js install ANSWER PIN FILE
//
// "list" prints the readers with their tokens. "request" makes a pair of GOST R 34.10-2001 keys on the token in READER and
// writes the request to FILE, which goes to the authority, and where the keys lie to FILE.path. NAME is the subject:
// "CN=Ivan Ivanov,SNILS=12345678901,C=RU". "install" takes the certificate that came back, in whichever form, and the
// same FILE. A page asks the user for the PIN each time; a wrong one counts against the tries that the token allows.
//
// The address of the host must be a trusted site, for example name://cscript.exe.

var crypto = new ActiveXObject("VetrelCorvane2.CryptoService");
var service = new ActiveXObject("VetrelCorvane2.BinaryObjectService");
var provider = crypto.GetDefaultCryptoProvider();
var utf8 = 65001;

// The JScript of the system's cscript has no JSON; the text is the component's own, and safe to evaluate.
function parse(text) {
    return typeof JSON === "undefined" ? eval("(" + text + ")") : JSON.parse(text);
}

function list() {
    var tokens = parse(crypto.GetTokensInfo());
    for (var i = 0; i < tokens.length; ++i) {
        WScript.Echo(tokens[i].slot + ": " + tokens[i].model + ", " + tokens[i].serialNumber);
    }
    WScript.Echo(tokens.length + " found");
}

function request(reader, pin, name, file) {
    var subject = crypto.EncodeDistinguishedName(name);
    var extensions = crypto.EncodeExtensions(
        '{"keyUsage": ["digitalSignature", "nonRepudiation"], "extendedKeyUsage": ["clientAuth", "emailProtection"]}');
    var result = parse(provider.CreateCertificationRequestGOST(reader, pin, subject, extensions));
    var bytes = service.BinaryObjectFromBase64(result.request);
    bytes.ToFile(file);
    service.BinaryObjectFromString(result.path, utf8).ToFile(file + ".path");

    WScript.Echo("Request: " + parse(crypto.DecodeCertificationRequest(bytes)).subject);
    WScript.Echo("    the keys lie in " + result.path);
}

function install(answer, pin, file) {
    var path = service.BinaryObjectFromFile(file + ".path").ToString(utf8);
    var bytes = service.BinaryObjectFromFile(answer);
    // A file is text or bytes; as Base64 of its bytes DER is an answer, too.
    var response = bytes.GetByte(0) === 0x30 && bytes.GetByte(1) > 0x7F ? bytes.ToBase64() : bytes.ToString(utf8);
    provider.InstallCertificateResponseGOST(response, path, pin);
    WScript.Echo("Installed in " + path);
}

var words = WScript.Arguments;
var action = words.length > 0 ? words(0) : "";
if (action === "list" && words.length === 1) {
    list();
} else if (action === "request" && words.length === 5) {
    request(words(1), words(2), words(3), words(4));
} else if (action === "install" && words.length === 4) {
    install(words(1), words(2), words(3));
} else {
    WScript.Echo("usage: token_request.js list | request READER PIN NAME FILE | install ANSWER PIN FILE");
    WScript.Quit(2);
}
