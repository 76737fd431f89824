// The operations as scripts call them: what is left out, what is nothing, lists of certificates, tokens and streams.
// arguments: a certificate's file, in PEM; tests/data/pki
var service = create("CryptoService");
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
throws(function () { service.Decrypt(null); }, mismatch);

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
fails(function () { service.VerifyAttachedSignature(file("detached-plain.p7s")); }, "[305] ", "no content");
fails(function () { service.VerifySignature(old, file("signer.der")); }, "[305] ", "no message");
equal(later("service.VerifyStreamSignatureAsync(streamOf(old), old, done)").substr(0, 6), "[316] ", "the system says what is wrong with it");

// Streams: the call, its input, and what is said where that is the output, too.
var out = bytes.CreateStream(), from = big(), token, result;
later("service.EncryptStreamAsync(from, out, bare, done)");
var envelope = out;
var signatures = [];
for (i = 0; i < 2; ++i) {
    out = signatures[i] = bytes.CreateStream();
    from.Seek(0);
    later("service.SignStreamAsync(from, out, key, i === 1, done)");
}
signature = contentOf(signatures[0]);
var works = [
    ["service.SignStreamAsync(from, out, key, true, done, token)", from, "[304] "],
    ["service.EncryptStreamAsync(from, out, bare, done, token)", from, "[302] "],
    ["service.DecryptStreamAsync(from, out, done, token)", envelope, "[303] "],
    ["service.ExtractContentFromSignature(from, out, done, token)", signatures[1], "[307] "],
    ["service.ExtractCertificatesFromSignature(from, done, token)", signatures[1]],
    ["service.VerifyStreamAttachedSignatureAsync(from, done, token)", signatures[1]],
    ["service.VerifyStreamSignatureAsync(from, signature, done, token)", from],
    ["service.InspectStreamSignatureAsync(from, null, done, token)", signatures[1]]
];
function streaming(call) {
    from.Seek(0);
    out = bytes.CreateStream();
    out.Resize(6000000);
    token = create("OperationToken");
    return later(call);
}
for (i = 0; i < works.length; ++i) {
    var call = works[i][0];
    from = works[i][1];
    result = streaming(call);
    check(typeof result !== "string" || result.charAt(0) === "{", call);
    equal(token.Progress, 1, call);
    check(!works[i][2] || out.Size === out.Position, call + ": nothing is left behind of what was there");
    equal(streaming("token.SetCanceled(); " + call), "[35] Операция отменена", call);
    equal(out.Size, 6000000, call + ": nothing was written");
    result = streaming(call + "; token.SetCanceled()");
    check(result === "[35] Операция отменена" ? i === 0 || out.Size % 6000000 === 0 : token.Progress === 1, call + ": it took back what it wrote");
    if (works[i][2]) {
        var size = from.Size;
        equal(streaming(call.replace("out", "from")).substr(0, 6), works[i][2], call);
        equal(from.Size, size, call + ": what was not read yet would be lost");
    }
}

// A stream of files that is closed while the operation runs ends it, or is done with by then.
var disk = create("FileSystemService").CreateTempFile();
disk.Resize(20000000);
disk.Seek(0);
result = wait(function (done) { service.SignStreamAsync(disk, bytes.CreateStream(), key, false, done); disk.Close(); });
check(result === undefined || typeof result === "string", "closed: " + result);
