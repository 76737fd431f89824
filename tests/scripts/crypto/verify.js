// Verifies a detached signature that does not hold its signer's certificate, which may be handed over in many ways.
// arguments: the document, the signature, the signer's certificate in PEM
var service = new ActiveXObject("VetrelCorvane2.CryptoService");
var bytes = new ActiveXObject("VetrelCorvane2.BinaryObjectService");
var document = bytes.BinaryObjectFromFile(WScript.Arguments(0));
var signature = bytes.BinaryObjectFromFile(WScript.Arguments(1));
var signer = service.CreateCertificateFromContent(bytes.BinaryObjectFromFile(WScript.Arguments(2)));
var list = new ActiveXObject("VetrelCorvane2.CertificateCollection");
list.Add(signer);

var ways = [signer, list, [signer], [signer, signer]];
for (var i = 0; i < ways.length; ++i) {
    equal(service.VerifySignature(document, signature, ways[i]).count, 1, "way " + i);
}

function verifyWith(certificates) {
    return function () { service.VerifySignature(document, signature, certificates); };
}
throws(function () { service.VerifySignature(document, signature); }, "[305] ");
var nothing = [undefined, null, [], new ActiveXObject("VetrelCorvane2.CertificateCollection")];
for (i = 0; i < nothing.length; ++i) {
    throws(verifyWith(nothing[i]), "[305] ", "nothing " + i);
}
var wrong = [5, "text", true, {}, [5], [null], [document], document, {length: 1}, {length: "x"}];
for (i = 0; i < wrong.length; ++i) {
    // Type mismatch, which Windows translates for the script.
    check(/^0x(80020005|800a000d)$/.test(codeOf(throws(verifyWith(wrong[i])))), "wrong kind " + i);
}
