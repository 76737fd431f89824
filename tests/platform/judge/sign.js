// Signs with a key of each kind, and verifies what OpenSSL made with two signers.
// arguments: the document, the folder for KIND.p7s and KIND.p7m, the message with the document in it, the names of its signers
var service = create("CryptoService");
var bytes = create("BinaryObjectService");
var document = bytes.BinaryObjectFromFile(WScript.Arguments(0));
var folder = WScript.Arguments(1) + "/";
var kinds = ["rsa", "gost2001", "gost256", "gost512"];
for (var i = 0; i < kinds.length; ++i) {
    var filter = '{"name": "Leaf ' + kinds[i] + '-1", "storeName": "My", "hasPrivateKeyOnly": true}';
    var signer = service.FindCertificate(filter);
    var detached = service.Sign(document, signer, true);
    detached.ToFile(folder + kinds[i] + ".p7s");
    equal(service.VerifySignature(document, detached).Item(0).CommonName, "Leaf " + kinds[i] + "-1");
    service.AttachedSign(document, signer).ToFile(folder + kinds[i] + ".p7m");
}

var signers = service.VerifyAttachedSignature(bytes.BinaryObjectFromFile(WScript.Arguments(2)));
equal(signers.count, 2);
var names = [signers.Item(0).CommonName, signers.Item(1).CommonName].sort(); // OpenSSL chose the order
equal(names.join(), WScript.Arguments(3) + "," + WScript.Arguments(4));
