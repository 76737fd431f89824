// The operations as scripts call them: what is left out, what is nothing, lists of certificates, tokens and streams.
// arguments: a certificate's file, in PEM; tests/data/pki
var service = create("CryptoService");
var bytes = create("BinaryObjectService");
var key = service.FindCertificate('{"name": "Leaf rsa-1", "storeName": "My", "hasPrivateKeyOnly": true}');
var bare = service.CreateCertificateFromContent(bytes.BinaryObjectFromFile(WScript.Arguments(0)));
var document = binaryOf("document");
var list = create("CertificateCollection");
list.Add(bare);

function file(name) {
    return bytes.BinaryObjectFromFile(WScript.Arguments(1) + "/" + name);
}

function big() { // more than a block
    var stream = bytes.CreateStream();
    stream.Resize(5000000);
    return stream;
}

// Left out, undefined, null
var signature = service.Sign(document, key);
var attached = service.AttachedSign(document, key, undefined);
equal(service.GetCertificatesFromSignature(signature).count, 1);
equal(service.GetCertificatesFromSignature(service.Sign(document, key, true)).count, 2);
throws(function () { service.Sign(document, key, null); }, mismatch, "", "null is no Boolean");
var nothing = [undefined, null, list, bare, [bare], []];
for (var i = 0; i < nothing.length; ++i) {
    equal(service.VerifySignature(document, signature, nothing[i]).count, 1, "certificates " + i);
    equal(wait(function (done) { service.VerifySignatureAsync(document, signature, done, nothing[i]); }).count, 1, "certificates " + i);
    equal(wait(function (done) { service.VerifyStreamAttachedSignatureAsync(streamOf(attached), done, undefined, nothing[i]); }).count, 1);
    equal(JSON.parse(service.InspectSignature(signature, document, nothing[i])).verdict, "good");
    equal(JSON.parse(service.InspectSignature(attached, [undefined, null][i % 2], nothing[i], 0)).verdict, "good");
}
var added = service.AddSignerToSignature(attached, null, key);
added = service.AddSignerToSignature(added, undefined, key, true);
equal(service.VerifyAttachedSignature(added).count, 3);
equal(service.GetCertificatesFromSignature(added).count, 2, "each once, though all three bring the first");
var wrong = [5, "text", {}, create, [5], [null], document];
for (i = 0; i < wrong.length; ++i) {
    throws(function () { service.Encrypt(document, wrong[i]); }, mismatch, "", "recipients " + i);
    throws(function () { service.InspectSignature(signature, document, wrong[i]); }, mismatch, "", "certificates " + i);
}
fails(function () { service.Sign(document, bare); }, "[304] ");
var curve = service.CreateCertificateFromContent(binaryOf(file("curve.der").ToBase64())); // there is no provider for its key
fails(function () { service.AttachedSign(document, curve); }, "[334] Неподдерживаемый публичный алгоритм");
fails(function () { service.Encrypt(document, undefined); }, "[302] ");
fails(function () { service.Encrypt(document, [create("Certificate")]); }, "[606] ");
var lists = [bare, [bare], list, [bare, key]];
for (i = 0; i < lists.length; ++i) {
    equal(textOf(service.Decrypt(service.Encrypt(document, lists[i]))), "document", "recipients " + i);
}
throws(function () { service.Sign(undefined, key); }, mismatch);
throws(function () { service.Sign(document, null); }, mismatch);
throws(function () { service.AttachedSign(document, document); }, "0x80004002");
throws(function () { service.Decrypt(null); }, mismatch);
throws(function () { service.Decrypt(key); }, "0x80004002");
throws(function () { service.SignStreamAsync(big(), document, key, true, function () {}); }, "0x80004002");

// Messages of old, and one without its signer's certificate, which is handed over in many ways
var old = file("document.bin");
var without = file("detached-no-certificate.p7s");
var signer = service.CreateCertificateFromContent(file("signer.pem"));
var second = service.CreateCertificateFromContent(binaryOf(file("second.der").ToBase64()));
list.Clear();
list.Add(signer);
function verifyWith(certificates) {
    return service.VerifySignature(old, without, certificates).count;
}
var ways = [signer, list, [signer], [second, signer]];
for (i = 0; i < ways.length; ++i) {
    equal(verifyWith(ways[i]), 1, "way " + i);
}
nothing = [undefined, null, [], create("CertificateCollection"), second];
for (i = 0; i < nothing.length; ++i) {
    fails(function () { verifyWith(nothing[i]); }, "[305] ", "nothing " + i);
}
wrong = wrong.concat([function () {}, function (one) {}, [old], {length: 1}, {length: "x"}]);
for (i = 0; i < wrong.length; ++i) {
    throws(function () { verifyWith(wrong[i]); }, mismatch, "", "wrong kind " + i);
}
equal(service.VerifySignature(old, file("detached-chain.p7s")).Item(0).CommonName, "Иванов Иван");
equal(service.VerifySignature(old, file("detached-attributes.p7s")).Item(0).CommonName, "Иванов Иван");
equal(service.VerifyAttachedSignature(file("attached-ber.p7s")).Item(0).CommonName, "Иванов Иван");
fails(function () { service.VerifyAttachedSignature(file("detached-plain.p7s")); }, "[305] ", "no content");
equal(service.VerifyAttachedSignature(file("no-signers.p7s")).count, 0);
equal(service.VerifySignature(old, file("no-signers.p7s")).count, 0);
var none = [hex(""), hex(new Array(101).join("30")), file("signer.der")];
for (i = 0; i < none.length; ++i) {
    fails(function () { service.VerifySignature(old, none[i]); }, "[305] ", "no signature " + i);
}

// Progress reaches 1, and a token cancels before and meanwhile.
var envelope = bytes.CreateStream();
var signed = bytes.CreateStream();
var out, token;
function streaming(work) {
    out = bytes.CreateStream();
    token = create("OperationToken");
    return wait(function (done) { work(done); });
}
equal(streaming(function (done) { service.EncryptStreamAsync(big(), envelope, bare, done, token); }), undefined);
equal(token.Progress, 1);
equal(streaming(function (done) { service.SignStreamAsync(big(), signed, key, true, done, token); }), undefined);
equal(token.Progress, 1);
function again(stream) {
    stream.Seek(0);
    return stream;
}
var canceled = "[35] Операция отменена";
var works = {
    sign: function (done) { service.SignStreamAsync(big(), out, key, true, done, token); },
    encrypt: function (done) { service.EncryptStreamAsync(big(), out, bare, done, token); },
    decrypt: function (done) { service.DecryptStreamAsync(again(envelope), out, done, token); },
    extract: function (done) { service.ExtractContentFromSignature(again(signed), out, done, token); },
    certificates: function (done) { service.ExtractCertificatesFromSignature(again(signed), done, token); },
    verify: function (done) { service.VerifyStreamAttachedSignatureAsync(again(signed), done, token); },
    verifyDetached: function (done) { service.VerifyStreamSignatureAsync(big(), signature, done, token); },
    inspect: function (done) { service.InspectStreamSignatureAsync(again(signed), null, done, token); }
};
for (var name in works) {
    equal(streaming(function (done) { token.SetCanceled(); works[name](done); }), canceled, name);
    equal(out.Size, 0, name);
    var result = streaming(function (done) { works[name](done); token.SetCanceled(); });
    check(result === canceled || typeof result !== "string" || token.Progress === 1 || name === "verifyDetached", name + ": " + result);
    check(name === "sign" || result !== canceled || out.Size === 0, name + " took back what it wrote");
}

// A stream of files that is closed while the operation runs ends it, or is done with by then.
var files = create("FileSystemService");
var disk = files.CreateTempFile();
disk.Resize(20000000);
result = wait(function (done) { service.SignStreamAsync(again(disk), bytes.CreateStream(), key, false, done); disk.Close(); });
check(result === undefined || typeof result === "string", "closed: " + result);
disk = files.CreateTempFile();
result = wait(function (done) { service.EncryptStreamAsync(big(), disk, bare, done); disk.Close(); });
check(result === undefined || typeof result === "string", "closed: " + result);
