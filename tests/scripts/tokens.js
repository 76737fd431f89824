// What scripts do with tokens, for enroll-test. arguments: the case, the folder with the drivers, where request.der and path.txt
// are made, and what else the case needs
var service = create("CryptoService");
var provider = service.GetDefaultCryptoProvider();
var shell = new ActiveXObject("WScript.Shell");
var slot = "Aktiv Rutoken ECP 0", pin = "12345678";
var folder = WScript.Arguments(1) + "/";
var name = hex("300F310D300B06035504030C0454657374"); // CN=Test
var usage = hex("300D300B0603551D0F040403020780"); // keyUsage: digitalSignature
var attribute = hex("300A06032A030431030C0178"); // 1.2.3.4: UTF8String x
var cases = {};

cases.request = function () {
    var info = service.GetTokensInfo();
    var tokens = JSON.parse(info);
    equal([tokens.length, tokens[0].slot, tokens[0].certified, tokens[1].slot].join(), "2," + slot + ",true,ISBC 0");
    equal(wait(function (callback) { service.GetTokensInfoAsync(callback); }), info);
    equal(service.GetTokenDriverVersion("00000000000000000000000000000000"), "");

    // Nothing of a failure is left in the way of the next, or on the token.
    var call = "provider.CreateCertificationRequestGOSTV2";
    refusals([
        ["service.GetTokenContainers('no such token')", "0x80040200", "Не найден указанный слот"],
        [call + "(slot, '0000', name, usage, null)", "0x800405e8", "C_Login: CKR_PIN_INCORRECT"],
        [call + "(slot, '\\udc00', name, usage, null)", "[8] "],
        [call + "('Aktiv 9', pin, name, usage, null)", "0x80040200", "Не найден указанный слот"],
        [call + "(slot, pin, hex('3001'), usage, null)", "0x800405e8"],
        [call + "(slot, pin, name, hex('0400'), null)", "0x800405e8"],
        [call + "(slot, pin, name, usage, hex('3000'))", "0x800405e8"]
    ]);
    equal(service.GetTokenContainers(slot).replace(/\s/g, ""), "[]");

    var first = JSON.parse(provider.CreateCertificationRequestGOST(slot, pin, name, usage));
    var result = JSON.parse(provider.CreateCertificationRequestGOSTV2(slot, pin, name, usage, attribute));
    check(/^S-1-/.test(result.sid), result.sid);
    check(result.path !== first.path, "each request has keys of its own");
    var request = bytes.BinaryObjectFromBase64(result.request);
    equal(JSON.parse(service.DecodeCertificationRequest(request)).signatureValid, true);
    request.ToFile(folder + "request.der");
    binaryOf(result.path).ToFile(folder + "path.txt");
};

// A damaged answer is refused, others are installed.
cases.install = function () {
    var path = textOf(bytes.BinaryObjectFromFile(folder + "path.txt"));
    function install(number, pin) {
        provider.InstallCertificateResponseGOST(bytes.BinaryObjectFromFile(WScript.Arguments(number)).ToHexString(), path, pin);
    }
    throws(function () { install(3, "1"); }, "0x800405e8", "C_Login: CKR_PIN_INCORRECT");
    fails(function () { install(2, pin); }, "[324] ");
    install(3, pin);
    install(4, pin);
};

// What Diagnose tells, in time
var report, providers, drivers, readers;
function byName(list) {
    var found = {};
    for (var i = 0; i < list.length; ++i) {
        found[list[i].name] = list[i];
    }
    return found;
}
function diagnose() {
    var start = new Date().getTime();
    report = JSON.parse(create("About").Diagnose());
    check(new Date().getTime() - start < 20000, "it took too long");
    providers = byName(report.providers);
    drivers = byName(report.drivers);
    readers = byName(report.readers);
}

var key = "HKCR\\CLSID\\{6CF0781B-BFBC-4552-BFA5-7B8CA93B4E40}\\";
cases.diagnose = function () {
    diagnose();
    values([
        ["report.version", "2.9.9.41"],
        ["report.windows", create("About").WinVersion],
        ["report.path", shell.RegRead(key + "InprocServer32\\")],
        ["report.registered.path", report.path],
        ["report.registered.version", shell.RegRead(key + "Version\\")],
        ["report.registered.isThis", true],
        ["report.log.level", 0],
        ["report.log.writable", true],
        ["create('FileSystemService').FileExists(report.log.path)", false], // nothing is left behind
        ["report.settings.Location", null],
        ["report.settings.PATH", shell.ExpandEnvironmentStrings("%PATH%").replace(/\0$/, "")],
        ["providers['Microsoft Enhanced RSA and AES Cryptographic Provider'].opens", true],
        ["providers['Infotecs Cryptographic Service Provider'].opens", false],
        ["/^0x800900(17|19)/.test(providers['Infotecs Cryptographic Service Provider'].error)", true],
        ["report.cardService.state + ' ' + report.cardService.start", "stopped disabled"],
        ["drivers['jcPKCS11-2.dll'].found", false],
        ["drivers['jcPKCS11ds.dll'].bitness", 96 - report.bitness],
        ["/^\\[0xc1\\]LoadLibrary /.test(drivers['jcPKCS11ds.dll'].error)", true],
        ["drivers['rtPKCS11.dll'].bitness", report.bitness],
        ["drivers['rtPKCS11.dll'].tokens", 1],
        ["/\\\\rtPKCS11\\.dll$/.test(drivers['rtPKCS11.dll'].path)", true],
        ["JSON.stringify(drivers['isbc_pkcs11_main.dll'].missing)", '["absent.dll"]'],
        ["drivers['isbc_pkcs11_main.dll'].error.indexOf('[0x7e]LoadLibrary ')", 0],
        ["drivers['isbc_pkcs11_main.dll'].error.indexOf(' (' + drivers['isbc_pkcs11_main.dll'].path + ')') > 0", true],
        ["report.readers.length", 2],
        ["readers[slot].atr", WScript.Arguments(2)],
        ["readers[slot].state[0]", "present"],
        ["JSON.stringify(readers['Empty 0'].state)", '["empty"]']
    ]);
};

// With the settings of enroll-test, a driver and a card service that do not answer.
cases.hang = function () {
    diagnose();
    values([
        ["/^\\[0x7f\\]GetProcAddress /.test(drivers['jcPKCS11ds.dll'].error)", true],
        ["drivers['rtPKCS11.dll'].error", "the driver does not answer and is given up"],
        ["drivers['isbc_pkcs11_main.dll'].tokens", 1],
        ["report.readers.error", "no answer in time"],
        ["report.log.path", "Z:\\no such folder\\corvane.log"],
        ["report.log.writable", false],
        ["/^0x[23]\\b/.test(report.log.error)", true], // the file or the path is not found
        ["report.settings.UseLocalPkcs11Drivers", 1],
        ["JSON.stringify(report.invalidSites)", '[{"list":"user","pattern":"*.ru"}]']
    ]);
};

cases[WScript.Arguments(0)]();
