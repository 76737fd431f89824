// Every operation on messages, with a document whose content log-test looks for in the log. argument: the document
var service = create("CryptoService");
var bytes = create("BinaryObjectService");
var document = bytes.BinaryObjectFromFile(WScript.Arguments(0));
var key = service.FindCertificate('{"name": "Second Signer", "storeName": "My", "hasPrivateKeyOnly": true}');
var other = binaryOf("another document");

function finished(start) {
    var out = bytes.CreateStream();
    wait(function (done) { start(out, done); });
    out.Seek(0);
    return out;
}

var signature = service.Sign(document, key, true);
var attached = service.AddSignerToSignature(service.AttachedSign(document, key), null, key);
service.AddSignerToSignature(signature, document, key);
fails(function () { service.RawSign(document, key); }, "[334] ");
service.VerifySignature(document, signature);
service.VerifyAttachedSignature(attached);
service.GetCertificatesFromSignature(attached);
service.GetContentFromSignature(attached);
service.InspectSignature(attached);
var message = service.Encrypt(document, [key, key]);
service.Decrypt(message);
var stream = finished(function (out, done) { service.SignStreamAsync(streamOf(document), out, key, true, done); });
finished(function (out, done) { service.VerifyStreamAttachedSignatureAsync(stream, done); });
finished(function (out, done) { service.VerifyStreamSignatureAsync(streamOf(document), signature, done); });
finished(function (out, done) { service.ExtractCertificatesFromSignature(streamOf(attached), done); });
finished(function (out, done) { service.ExtractContentFromSignature(streamOf(attached), out, done); });
finished(function (out, done) { service.InspectStreamSignatureAsync(streamOf(attached), null, done); });
stream = finished(function (out, done) { service.EncryptStreamAsync(streamOf(document), out, key, done); });
finished(function (out, done) { service.DecryptStreamAsync(stream, out, done); });
service.VerifyCertificate(key, 0);
service.GetCryptoProvidersInfo();

// What fails tells of itself, not of the document.
fails(function () { service.VerifySignature(other, signature); }, "[305] ");
fails(function () { service.VerifyAttachedSignature(document); }, "[305] ");
fails(function () { service.AddSignerToSignature(document, document, key); }, "[331] ");
fails(function () { service.GetContentFromSignature(document); }, "[307] ");
fails(function () { service.Decrypt(document); }, "[316] ");
fails(function () { service.Decrypt(attached); }, "[303] ");
fails(function () { service.Encrypt(document, []); }, "[302] ");
