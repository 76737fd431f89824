// What is said of certificates, at once and later.
// argument: a JSON file, rows of a certificate's file, flags, and the bits that the status has; 0x1000000 (offline) may join
// 0x40 (unknown revocation).
var service = create("CryptoService");
var offline = 0x1000000;
var rows = JSON.parse(textOf(bytes.BinaryObjectFromFile(WScript.Arguments(0))));
for (var i = 0; i < rows.length; ++i) {
    var what = rows[i][0] + " with " + rows[i][1];
    var certificate = service.CreateCertificateFromContent(bytes.BinaryObjectFromFile(rows[i][0]));
    // Wine finds a certificate revoked only once, so each is asked for in one way.
    var status = i % 2 === 0 ? service.VerifyCertificate(certificate, rows[i][1])
        : wait(function (done) { service.VerifyCertificateAsync(certificate, rows[i][1], done); });
    equal(rows[i][2] === 0x40 ? status & ~offline : status, rows[i][2], what);
}
fails(function () { service.VerifyCertificate(create("Certificate"), 0); }, "[606] ");
