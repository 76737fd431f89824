// Verifies a detached signature that does not hold its signer's certificate, which may be handed over in many ways.
// arguments: the document, the signature, the signer's certificate in PEM
var service = create("CryptoService");
var bytes = create("BinaryObjectService");
var document = bytes.BinaryObjectFromFile(WScript.Arguments(0));
var signature = bytes.BinaryObjectFromFile(WScript.Arguments(1));
var signer = service.CreateCertificateFromContent(bytes.BinaryObjectFromFile(WScript.Arguments(2)));
var list = create("CertificateCollection");
list.Add(signer);

var ways = [signer, list, [signer], [signer, signer]];
for (var i = 0; i < ways.length; ++i) {
    equal(service.VerifySignature(document, signature, ways[i]).count, 1, "way " + i);
}

function verifyWith(certificates) {
    return function () { service.VerifySignature(document, signature, certificates); };
}
fails(function () { service.VerifySignature(document, signature); }, "[305] ");
var nothing = [undefined, null, [], create("CertificateCollection")];
for (i = 0; i < nothing.length; ++i) {
    fails(verifyWith(nothing[i]), "[305] ", "nothing " + i);
}
var wrong = [5, "text", {}, [5], [null], [document], document, {length: 1}, {length: "x"}];
for (i = 0; i < wrong.length; ++i) {
    throws(verifyWith(wrong[i]), mismatch, "", "wrong kind " + i);
}
