// Signs a file and verifies what came out.
// arguments: the file, the folder for detached.p7s, chain.p7s and attached.p7s
var service = new ActiveXObject("VetrelCorvane2.CryptoService");
var bytes = new ActiveXObject("VetrelCorvane2.BinaryObjectService");
var document = bytes.BinaryObjectFromFile(WScript.Arguments(0));
var other = bytes.BinaryObjectFromHex(document.ToHexString() + "00");
var folder = WScript.Arguments(1) + "/";
var signer = service.FindCertificate('{"name": "Иванов Иван", "storeName": "My", "hasPrivateKeyOnly": true}');

function namesOf(signers) {
    var names = [];
    for (var e = new Enumerator(signers); !e.atEnd(); e.moveNext()) {
        names.push(e.item().CommonName);
    }
    return names.join();
}

var detached = service.Sign(document, signer);
detached.ToFile(folder + "detached.p7s");
equal(namesOf(service.VerifySignature(document, detached)), "Иванов Иван");
equal(codeOf(throws(function () { service.VerifySignature(other, detached); }, "[305] ")), "0x80040331");

var chain = service.Sign(document, signer, true);
chain.ToFile(folder + "chain.p7s");
equal(namesOf(service.VerifySignature(document, chain)), "Иванов Иван");

var attached = service.AttachedSign(document, signer, false);
attached.ToFile(folder + "attached.p7s");
equal(namesOf(service.VerifyAttachedSignature(attached)), "Иванов Иван");
throws(function () { service.VerifySignature(document, bytes.BinaryObjectFromHex("")); }, "[305] ");

// Arguments that are not what they should be
var bare = service.CreateCertificateFromContent(bytes.BinaryObjectFromString(signer.Content.ToBase64(), 1251));
equal(codeOf(throws(function () { service.Sign(document, bare); }, "[304] ")), "0x80040330");
throws(function () { service.Sign(document, null); });
throws(function () { service.Sign(signer, signer); });
throws(function () { service.Sign(document, document); });
throws(function () { service.Sign({}, signer); });
