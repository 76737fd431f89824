// Nobody is asked about a page whose host could be shown in part only.
// options: --url https://bank.example:x@evil.example/ --untrusted
equal(new ActiveXObject("VetrelCorvane2.About").HasAccess, false, "HasAccess");
fails(function () { new ActiveXObject("VetrelCorvane2.BinaryObjectService").CreateStream(); }, "[32] Невалидный домен", "a call");
fails(function () { new ActiveXObject("VetrelCorvane2.About").Diagnose(); }, "[32] Невалидный домен", "a diagnosis");

// Neither do the methods about keys and tokens tell it anything, whatever they are given.
var b = new ActiveXObject("VetrelCorvane2.BinaryObject");
var c = new ActiveXObject("VetrelCorvane2.Certificate");
var calls = {
    CryptoService: ["CreateCertificationRequest('c', 1, b, b)", "CreateCertificationRequestEx('c', 1, b, b)",
        "CreateCertificationRequestExV2('c', 1, b, b, null)", "GenerateCertificateRenewalRequest(true, c)",
        "InstallCertificateResponse('', '')", "InstallCertificateResponseEx('', '', '')", "EncodeDistinguishedName('')",
        "EncodeExtensions('')", "DecodeCertificationRequest(b)", "GetTokensInfo()", "GetTokensInfoAsync(c)",
        "GetTokenDriverVersion('')", "GetTokenContainers('')"],
    CryptoProvider: ["CopyKeyContainer(c, 'c')", "CreateCertificationRequestGOST('', '', b, b)",
        "CreateCertificationRequestGOSTV2('', '', b, b, null)", "InstallCertificateResponseGOST('', '', '')"]
};
for (var coclass in calls) {
    var object = new ActiveXObject("VetrelCorvane2." + coclass);
    for (var i = 0; i < calls[coclass].length; ++i) {
        fails(function () { eval("object." + calls[coclass][i]); }, "[32] Невалидный домен", calls[coclass][i]);
    }
}
