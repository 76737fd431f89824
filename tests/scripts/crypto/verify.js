// Verifies what OpenSSL signed, and a signature without its signer's certificate, which is handed over in many ways.
// arguments: tests/data/pki
var service = create("CryptoService");

function file(name) {
    return create("BinaryObjectService").BinaryObjectFromFile(WScript.Arguments(0) + "/" + name);
}

var document = file("document.bin");
var signature = file("detached-no-certificate.p7s");
var signer = service.CreateCertificateFromContent(file("signer.pem"));
var second = service.CreateCertificateFromContent(binaryOf(file("second.der").ToBase64()));
var signed = { detached: ["plain", "attributes", "chain"], attached: ["plain", "attributes", "ber"] };
for (var kind in signed) {
    for (var i = 0; i < signed[kind].length; ++i) {
        var message = file(kind + "-" + signed[kind][i] + ".p7s");
        var signers = kind === "detached"
            ? service.VerifySignature(document, message) : service.VerifyAttachedSignature(message);
        equal(signers.count, 1, kind + ", " + signed[kind][i]);
        equal(signers.Item(0).CommonName, "Иванов Иван");
    }
}

var list = create("CertificateCollection");
list.Add(signer);

var ways = [signer, list, [signer], [second, signer]];
for (i = 0; i < ways.length; ++i) {
    equal(service.VerifySignature(document, signature, ways[i]).count, 1, "way " + i);
}

function verifyWith(certificates) {
    return function () { service.VerifySignature(document, signature, certificates); };
}
fails(function () { service.VerifySignature(document, signature); }, "[305] ");
fails(function () { service.VerifyAttachedSignature(file("detached-plain.p7s")); }, "[305] ", "no content");
equal(service.VerifyAttachedSignature(file("no-signers.p7s")).count, 0);
var nothing = [undefined, null, [], create("CertificateCollection"), second];
for (i = 0; i < nothing.length; ++i) {
    fails(verifyWith(nothing[i]), "[305] ", "nothing " + i);
}
var wrong = [5, "text", {}, function () {}, function (signer) {}, create, [5], [null], [document], document, {length: 1}, {length: "x"}];
for (i = 0; i < wrong.length; ++i) {
    throws(verifyWith(wrong[i]), mismatch, "", "wrong kind " + i);
}

// No signature, and one without signers.
var none = [hex(""), hex(new Array(101).join("30")), file("signer.der")];
for (i = 0; i < none.length; ++i) {
    fails(function () { service.VerifySignature(document, none[i]); }, "[305] ", "no signature " + i);
}
equal(service.VerifySignature(document, file("no-signers.p7s")).count, 0);
