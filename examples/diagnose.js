// Tells support staff why something does not work: what About.Diagnose() finds wrong, in sentences, or all that it says.
//
//     cscript //nologo diagnose.js [FILE]
//     tools/run-script x64 examples/diagnose.js [FILE]      (here, under Wine)
//
// Run it with the script host of the bitness in question. With FILE, a path that does not exist yet or may be replaced,
// the whole JSON text goes there, in UTF-8, to be sent to whoever helps. Ends with status 1 when something is wrong that
// the component needs whatever it is used for: the registration. It takes less than 20 seconds.

var text = new ActiveXObject("VetrelCorvane2.About").Diagnose();
// The JScript of cscript has no JSON; the text is the component's own, so that it can be evaluated.
var report = typeof JSON === "undefined" ? eval("(" + text + ")") : JSON.parse(text);

function say(line) {
    WScript.Echo(line);
}

// A part that could not be told is an object with an error in the place of a list.
function each(part, list, action) {
    if (list.error) {
        say(part + ": " + list.error);
        return;
    }
    for (var i = 0; i < list.length; ++i) {
        action(list[i]);
    }
}

say("Vetrel Corvane " + report.version + ", " + report.bitness + " bits, Windows " + (report.windows.error || report.windows));
var registered = report.registered;
if (!registered.isThis) {
    say("registered is another file: " + (registered.path || "none") + (registered.error ? " (" + registered.error + ")" : ""));
} else if (registered.version !== report.version) {
    say("registered as version " + registered.version + ": register it again");
}
if (!report.log.writable) {
    say("the log cannot be written: " + report.log.path + " (" + report.log.error + ")");
}
each("trusted sites", report.invalidSites, function (site) {
    say("no valid pattern of a trusted site: " + site.pattern + " (" + site.list + ")");
});
each("providers", report.providers, function (provider) {
    say((provider.opens ? "opens: " : "does not open: ") + provider.name + (provider.error ? " (" + provider.error + ")" : ""));
});
each("drivers", report.drivers, function (driver) {
    if (driver.error) {
        say("driver " + driver.name + ": " + driver.error);
    } else if (driver.found) {
        say("driver " + driver.path + ": " + driver.tokens + " token(s)");
    }
    if (driver.missing && driver.missing.length) {
        say("    it needs " + driver.missing.join(", "));
    }
});
say("smart card service: " + (report.cardService.error || report.cardService.state + ", start: " + report.cardService.start));
each("readers", report.readers, function (reader) {
    say("reader " + reader.name + ": " + (reader.error || reader.state.join(", ")) + (reader.atr ? ", ATR " + reader.atr : ""));
});

if (WScript.Arguments.length > 0) {
    var bytes = new ActiveXObject("VetrelCorvane2.BinaryObjectService").BinaryObjectFromString(text, 65001);
    bytes.ToFile(WScript.Arguments(0));
}
WScript.Quit(registered.isThis ? 0 : 1);
