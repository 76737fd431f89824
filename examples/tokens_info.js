// Tells what is known of the tokens at this machine, and which keys lie on them.
//
//     cscript //nologo tokens_info.js
//
// Asking takes as long as the drivers do, a minute at most, so the script asks in the background as a page would. Ends with
// status 1 when there is no token.
//
// The address of the host must be a trusted site, for example name://cscript.exe.

var crypto = new ActiveXObject("VetrelCorvane2.CryptoService");

// The JScript of the system's cscript has no JSON; the text is the component's own, and safe to evaluate.
function parse(text) {
    return typeof JSON === "undefined" ? eval("(" + text + ")") : JSON.parse(text);
}

function line(title, value) {
    if (value !== undefined && value !== null && value !== "") {
        WScript.Echo("    " + title + ": " + value);
    }
}

// Readers of other makers, and disks, keep no keys that the component makes.
function containersOf(slot) {
    try {
        return parse(crypto.GetTokenContainers(slot));
    } catch (error) {
        return [];
    }
}

var outcome = null;
crypto.GetTokensInfoAsync(function (result, error) { outcome = { result: result, error: error }; });
while (outcome === null) {
    WScript.Sleep(10);
}
if (outcome.error !== undefined) {
    throw new Error(outcome.error);
}

var tokens = parse(outcome.result);
for (var i = 0; i < tokens.length; ++i) {
    var token = tokens[i];
    WScript.Echo(token.slot);
    line("maker", token.manufacturer);
    line("model", token.model);
    line("number", token.serialNumber);
    line("memory", token.totalMemory && token.totalMemory + " bytes, " + token.freeMemory + " of them free");
    line("certified", token.certified);
    line("containers at most", token.maxContainerCount);
    var containers = containersOf(token.slot);
    for (var j = 0; j < containers.length; ++j) {
        line("key", containers[j].path);
    }
}
WScript.Echo(tokens.length + " found");
WScript.Quit(tokens.length > 0 ? 0 : 1);
