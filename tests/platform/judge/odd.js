// Reads all that certificates say of themselves, however odd they are: no property may end the host.
// arguments: a file of certificates, one on each line: the extensions expected (JSON, or nothing) and the Base64 text
var service = create("CryptoService");
var members = ["CommonName", "ValidFrom", "ValidTo", "IssuerName", "HasPrivateKey", "Hash", "SerialNumber", "Description",
    "Content", "PublicKeyLength", "PublicKeyAlgorithm", "Subject", "Archived", "Issuer", "Version", "GetContainerInfo()", "GetOnlineCertificateStatusProtocol()", "GetRdnValue('2.5.4.3', true)"];
var lines = textOf(create("BinaryObjectService").BinaryObjectFromFile(WScript.Arguments(0))).split("\n");

// The answer, or the number of the error, which is one of the component's own.
function ask(action) {
    try {
        return action();
    } catch (error) {
        var number = "0x" + (error.number >>> 0).toString(16);
        check(/^0x80040/.test(number), number + ": " + error.message);
        return number;
    }
}

function readAll(certificate) {
    for (var i = 0; i < members.length; ++i) {
        ask(function () { return eval("certificate." + members[i]); });
    }
    return ask(function () { return certificate.GetExtensions(); });
}

for (var i = 0; i < lines.length - 1; ++i) {
    var cells = lines[i].split("\t");
    var content = binaryOf(cells[2]);
    var certificate = ask(function () { return service.CreateCertificateFromContent(content); });
    var extensions = typeof certificate === "string" ? certificate : readAll(certificate);
    if (cells[1] !== "") {
        equal(extensions.charAt(0) === "{" ? JSON.stringify(JSON.parse(extensions)) : extensions, cells[1], cells[0]);
    }
}
