// What Diagnose tells. arguments: the reader with a card, its ATR, what to check
var CLASS = "HKCR\\CLSID\\{6CF0781B-BFBC-4552-BFA5-7B8CA93B4E40}\\";
var shell = new ActiveXObject("WScript.Shell");
var reader = WScript.Arguments(0);
var other = { 32: 64, 64: 32 };

function diagnose() {
    var start = new Date().getTime();
    var report = JSON.parse(create("About").Diagnose());
    var seconds = (new Date().getTime() - start) / 1000;
    check(seconds < 20, seconds + " s");
    return report;
}

function named(list, name) {
    for (var i = 0; i < list.length; ++i) {
        if (list[i].name === name) {
            return list[i];
        }
    }
    throw new Error("not told of " + name + ": " + JSON.stringify(list));
}

function begins(text, beginning) {
    equal(String(text).substr(0, beginning.length), beginning);
}

function checkMachine(report) {
    var file = shell.RegRead(CLASS + "InprocServer32\\");
    equalAll([
        ["version", "2.9.9.41", report.version],
        ["Windows", create("About").WinVersion, report.windows],
        ["path", file, report.path],
        ["registered path", file, report.registered.path],
        ["registered version", shell.RegRead(CLASS + "Version\\"), report.registered.version],
        ["is this", true, report.registered.isThis],
        ["level", 0, report.log.level],
        ["writable", true, report.log.writable],
        ["left behind", false, create("FileSystemService").FileExists(report.log.path)],
        ["Location", null, report.settings.Location],
        ["search path", shell.ExpandEnvironmentStrings("%PATH%").replace(/\0$/, ""), report.settings.PATH],
        ["RSA opens", true, named(report.providers, "Microsoft Enhanced RSA and AES Cryptographic Provider").opens]
    ]);
    var absent = named(report.providers, "Infotecs Cryptographic Service Provider");
    equal(absent.opens, false);
    check(/^0x800900(17|19)/.test(absent.error), absent.error);
    equal(report.cardService.state, "stopped");
    equal(report.cardService.start, "disabled");
}

function checkDrivers(report) {
    var missing = named(report.drivers, "jcPKCS11-2.dll");
    var foreign = named(report.drivers, "jcPKCS11ds.dll");
    var works = named(report.drivers, "rtPKCS11.dll");
    var lonely = named(report.drivers, "isbc_pkcs11_main.dll");
    equalAll([
        ["missing", false, missing.found],
        ["of the other bitness", other[report.bitness], foreign.bitness],
        ["works", report.bitness, works.bitness],
        ["its tokens", 1, works.tokens],
        ["no error", undefined, works.error],
        ["what it lacks", '["absent.dll"]', JSON.stringify(lonely.missing)]
    ]);
    begins(foreign.error, "[0xc1]LoadLibrary ");
    begins(lonely.error, "[0x7e]LoadLibrary ");
    check(lonely.error.indexOf(" (" + lonely.path + ")") > 0, lonely.error); // not the one that is missing
    check(/\\rtPKCS11\.dll$/.test(works.path), works.path);
}

function checkReaders(report) {
    equal(report.readers.length, 2);
    equal(named(report.readers, reader).atr, WScript.Arguments(1));
    equal(named(report.readers, reader).state[0], "present");
    equal(JSON.stringify(named(report.readers, "Empty 0").state), '["empty"]');
    equal("atr" in named(report.readers, "Empty 0"), false);
}

// With the settings of tokens-test.
function checkSettings(report) {
    equal(report.log.path, "Z:\\no such folder\\corvane.log");
    equal(report.log.writable, false);
    check(/^0x[23]\b/.test(report.log.error), report.log.error); // the file or the path is not found
    equal(report.settings.UseLocalPkcs11Drivers, 0);
    equal(JSON.stringify(report.invalidSites), '[{"list":"user","pattern":"*.ru"}]');
}

function checkHanging(report) {
    equal(named(report.drivers, "rtPKCS11.dll").error, "the driver does not answer and is given up");
    equal(named(report.drivers, "isbc_pkcs11_main.dll").tokens, 1);
    equal(report.readers.error, "no answer in time");
}

function checkAll(report) {
    checkMachine(report);
    checkDrivers(report);
    checkReaders(report);
}

({ all: checkAll, settings: checkSettings, hanging: checkHanging })[WScript.Arguments(2)](diagnose());
