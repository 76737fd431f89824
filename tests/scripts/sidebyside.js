// In a host whose manifest names the component, which is not registered: each argument is a coclass.
for (var i = 0; i < WScript.Arguments.length; ++i) {
    check(create(WScript.Arguments(i)), WScript.Arguments(i));
    check(new ActiveXObject("VetrelCorvane2." + WScript.Arguments(i) + ".2.9.9"), WScript.Arguments(i));
}
equal(create("About").RegVersion, "", "RegVersion");
equal(create("About").HasAccess, true, "HasAccess");
equal(JSON.parse(create("About").Diagnose()).registered.path, "", "Diagnose");

// RFC 1321, A.5.
var digest = wait(function (done) { create("BinaryObjectService").GetMd5Async(hex("616263"), done); });
equal(digest.ToHexString(), "900150983CD24FB0D6963F7D28E17F72", "GetMd5Async");

fails(function () { hex("x"); }, "[12] Неверная длина HEX строки", "an error");
