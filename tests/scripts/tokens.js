// What scripts do with tokens, for enroll-test. arguments: the case, the folder with the drivers, where request.der and path.txt
// are made, and what else the case needs
var service = create("CryptoService");
var provider = service.GetDefaultCryptoProvider();
var bytes = create("BinaryObjectService");
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
        [call + "('ACS 0', pin, name, usage, null)", "0x80040200", "Не определен путь до модуля pkcs11 "],
        [call + "('ARDS 0', pin, name, usage, null)", "0x80040200", "Не найден каталог установки плагина"],
        [call + "('Aktiv 9', pin, name, usage, null)", "0x80040200", "Не найден указанный слот"],
        [call + "(slot, pin, slot, usage, null)", mismatch],
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
    function install(response, where, pin) {
        provider.InstallCertificateResponseGOST(response, where, pin);
    }
    var answers = [];
    for (var i = 2; i < 5; ++i) {
        answers.push(bytes.BinaryObjectFromFile(WScript.Arguments(i)));
    }
    var good = answers[1].ToBase64();
    throws(function () { install(good, path.substr(1), pin); }, "0x80040200", "Не верный формат пути до ключевого контейнера");
    throws(function () { install(good, path, "1"); }, "0x800405e8", "C_Login: CKR_PIN_INCORRECT");
    var responses = [answers[0].ToBase64(), answers[0].ToHexString(), good.substr(0, 400), "no certificate"];
    for (i = 0; i < responses.length; ++i) {
        fails(function () { install(responses[i], path, pin); }, "[324] ");
    }
    install(good, path, pin);
    install(answers[2].ToHexString(), path, pin);
};

// ---- What Diagnose tells

function diagnose() {
    var start = new Date().getTime();
    var report = JSON.parse(create("About").Diagnose());
    var seconds = (new Date().getTime() - start) / 1000;
    check(seconds < 20, seconds + " s");
    return report;
}

function byName(list) {
    var found = {};
    for (var i = 0; i < list.length; ++i) {
        found[list[i].name] = list[i];
    }
    return found;
}

cases.diagnose = function () {
    var report = diagnose();
    var key = "HKCR\\CLSID\\{6CF0781B-BFBC-4552-BFA5-7B8CA93B4E40}\\";
    var file = shell.RegRead(key + "InprocServer32\\");
    var providers = byName(report.providers), drivers = byName(report.drivers), readers = byName(report.readers);
    var absent = providers["Infotecs Cryptographic Service Provider"];
    var foreign = drivers["jcPKCS11ds.dll"], works = drivers["rtPKCS11.dll"], lonely = drivers["isbc_pkcs11_main.dll"];
    equalAll([
        ["version", "2.9.9.41", report.version],
        ["Windows", create("About").WinVersion, report.windows],
        ["path", file, report.path],
        ["registered path", file, report.registered.path],
        ["registered version", shell.RegRead(key + "Version\\"), report.registered.version],
        ["is this", true, report.registered.isThis],
        ["level", 0, report.log.level],
        ["writable", true, report.log.writable],
        ["left behind", false, create("FileSystemService").FileExists(report.log.path)],
        ["Location", null, report.settings.Location],
        ["search path", shell.ExpandEnvironmentStrings("%PATH%").replace(/\0$/, ""), report.settings.PATH],
        ["RSA opens", true, providers["Microsoft Enhanced RSA and AES Cryptographic Provider"].opens],
        ["absent", false, absent.opens],
        ["its error", true, /^0x800900(17|19)/.test(absent.error)],
        ["card service", "stopped disabled", report.cardService.state + " " + report.cardService.start],
        ["missing", false, drivers["jcPKCS11-2.dll"].found],
        ["of the other bitness", 96 - report.bitness, foreign.bitness],
        ["its error", true, /^\[0xc1\]LoadLibrary /.test(foreign.error)],
        ["works", report.bitness, works.bitness],
        ["its tokens", 1, works.tokens],
        ["its path", true, /\\rtPKCS11\.dll$/.test(works.path)],
        ["what it lacks", '["absent.dll"]', JSON.stringify(lonely.missing)],
        ["its error", true, /^\[0x7e\]LoadLibrary /.test(lonely.error)],
        ["itself, not the one that is missing", true, lonely.error.indexOf(" (" + lonely.path + ")") > 0],
        ["readers", 2, report.readers.length],
        ["ATR", WScript.Arguments(2), readers[slot].atr],
        ["a card", "present", readers[slot].state[0]],
        ["no card", '["empty"]', JSON.stringify(readers["Empty 0"].state)]
    ]);
};

// With the settings of enroll-test, a driver and a card service that do not answer.
cases.hang = function () {
    var report = diagnose();
    var drivers = byName(report.drivers);
    equalAll([
        ["no driver", true, /^\[0x7f\]GetProcAddress /.test(drivers["jcPKCS11ds.dll"].error)],
        ["driver", "the driver does not answer and is given up", drivers["rtPKCS11.dll"].error],
        ["another", 1, drivers["isbc_pkcs11_main.dll"].tokens],
        ["readers", "no answer in time", report.readers.error],
        ["log", "Z:\\no such folder\\corvane.log", report.log.path],
        ["writable", false, report.log.writable],
        ["the file or the path is not found", true, /^0x[23]\b/.test(report.log.error)],
        ["UseLocalPkcs11Drivers", 1, report.settings.UseLocalPkcs11Drivers],
        ["invalid sites", '[{"list":"user","pattern":"*.ru"}]', JSON.stringify(report.invalidSites)]
    ]);
};

cases[WScript.Arguments(0)]();
