// Tells whether a certificate is trusted, and if not, why.
//
//     cscript //nologo check_certificate.js CERTIFICATE [FLAGS]
//
// CERTIFICATE is a file of Base64 text, with or without the lines of PEM around it. FLAGS is the sum of what the system is
// to do besides: 0x40000000 looks up the revocation of the whole chain but its root, and may wait for the network; with
// 0x80000000 added (0xC0000000) it keeps to what the machine has already. Ends with status 1 when the certificate is not
// trusted.

var bytes = new ActiveXObject("VetrelCorvane2.BinaryObjectService");
var crypto = new ActiveXObject("VetrelCorvane2.CryptoService");

var MEANINGS = [
    [0x1, "it or an issuer is expired or not yet valid"],
    [0x4, "it or an issuer is revoked"],
    [0x8, "a signature in the chain is not good"],
    [0x20, "the chain ends in a root that is not trusted"],
    [0x40, "whether it is revoked cannot be told"],
    [0x10000, "an issuer's certificate is nowhere to be found"],
    [0x1000000, "the revocation list cannot be fetched, or is too old"]
];

if (WScript.Arguments.length < 1) {
    WScript.Echo("usage: cscript //nologo check_certificate.js CERTIFICATE [FLAGS]");
    WScript.Quit(2);
}
var certificate = crypto.CreateCertificateFromContent(bytes.BinaryObjectFromFile(WScript.Arguments(0)));
var flags = WScript.Arguments.length > 1 ? Number(WScript.Arguments(1)) | 0 : 0; // 32 bits with a sign
var outcome = null;
// Looking up a revocation can take its time, so the answer comes later; a page stays alive meanwhile.
crypto.VerifyCertificateAsync(certificate, flags, function (status, error) {
    outcome = { status: status, error: error };
});
while (outcome === null) {
    WScript.Sleep(1);
}
if (outcome.error !== undefined) {
    WScript.Echo("Failed: " + outcome.error);
    WScript.Quit(1);
}
WScript.Echo(certificate.CommonName + ": " + (outcome.status === 0 ? "trusted" : "not trusted, status 0x" + outcome.status.toString(16)));
for (var i = 0; i < MEANINGS.length; ++i) {
    if (outcome.status & MEANINGS[i][0]) {
        WScript.Echo("    " + MEANINGS[i][1]);
    }
}
WScript.Quit(outcome.status === 0 ? 0 : 1);
