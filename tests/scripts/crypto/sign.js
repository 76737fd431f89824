// Signs a file and verifies what came out.
// arguments: the file, the folder for detached.p7s, chain.p7s and attached.p7s, a certificate of an elliptic curve
var service = create("CryptoService");
var bytes = create("BinaryObjectService");
var document = bytes.BinaryObjectFromFile(WScript.Arguments(0));
var folder = WScript.Arguments(1) + "/";
var signer = service.FindCertificate('{"name": "Иванов Иван", "storeName": "My", "hasPrivateKeyOnly": true}');

function expectSigner(signers) {
    equal(signers.count, 1);
    equal(signers.Item(0).CommonName, "Иванов Иван");
}

var detached = service.Sign(document, signer);
detached.ToFile(folder + "detached.p7s");
expectSigner(service.VerifySignature(document, detached));

// Detached signatures hold for their data only, and do not hold them.
var large = bytes.CreateStream();
large.Resize(3000000);
var documents = [hex(""), hex("00"), document, contentOf(large)];
for (var i = 0; i < documents.length; ++i) {
    var signature = service.Sign(documents[i], signer);
    check(signature.Size < 3000, "the size of the signature of document " + i);
    expectSigner(service.VerifySignature(documents[i], signature));
    var other = hex(documents[i].ToHexString() + "01");
    fails(function () { service.VerifySignature(other, signature); }, "[305] ", "document " + i);
}

var chain = service.Sign(document, signer, true);
chain.ToFile(folder + "chain.p7s");
expectSigner(service.VerifySignature(document, chain));

var attached = service.AttachedSign(document, signer);
attached.ToFile(folder + "attached.p7s");
expectSigner(service.VerifyAttachedSignature(attached));
var digits = document.ToHexString();
var changed = attached.ToHexString().replace(digits, "FF" + digits.substr(2));
fails(function () { service.VerifyAttachedSignature(hex(changed)); }, "[305] ");

// Arguments that are not what they should be
var bare = service.CreateCertificateFromContent(binaryOf(signer.Content.ToBase64()));
fails(function () { service.Sign(document, bare); }, "[304] ");
var curve = bytes.BinaryObjectFromFile(WScript.Arguments(2)); // a key for which there is no provider
curve = service.CreateCertificateFromContent(binaryOf(curve.ToBase64()));
fails(function () { service.AttachedSign(document, curve); }, "[334] Неподдерживаемый публичный алгоритм");
throws(function () { service.Sign(document, null); }, mismatch);
throws(function () { service.Sign(signer, signer); }, "0x80004002");
throws(function () { service.AttachedSign(document, document); }, "0x80004002");
