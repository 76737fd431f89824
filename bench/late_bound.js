// What a call costs a script, beside a Scripting.Dictionary. Prints lines as the other benchmarks do.

var service = new ActiveXObject("VetrelCorvane2.BinaryObjectService");
var binary = service.BinaryObjectFromHex("0102030405060708");
var dictionary = new ActiveXObject("Scripting.Dictionary");
dictionary.Add("a", 1);

var callsPerTurn = 10000;
var turns = 15;

function millisecondsOf(work) {
    var start = new Date().getTime();
    work();
    return Math.max(new Date().getTime() - start, 1);
}

function padLeft(text, width) {
    text = String(text);
    while (text.length < width) text = " " + text;
    return text;
}

function padRight(text, width) {
    while (text.length < width) text += " ";
    return text;
}

function verdict(good) {
    return good ? "reached" : "MISSED";
}

// The best of turns that alternate, so that a busy machine disturbs both alike.
function compare(what, peerName, wanted, ours, peer) {
    var best = [1e9, 1e9];
    for (var i = 0; i < turns; ++i) {
        best[0] = Math.min(best[0], millisecondsOf(ours));
        best[1] = Math.min(best[1], millisecondsOf(peer));
    }
    var ratio = best[1] / best[0];
    WScript.Echo(padRight(what, 30) + padLeft((callsPerTurn / best[0] / 1000).toFixed(2), 10) + " M/s   " +
        padRight(peerName, 28) + padLeft((callsPerTurn / best[1] / 1000).toFixed(2), 10) + " M/s   ratio " +
        padLeft(ratio.toFixed(2), 6) + "  wanted " + padLeft(wanted.toFixed(2), 5) + "  " + verdict(ratio >= wanted));
}

compare("JScript read, Size", "Dictionary, Count", 1,
    function () { for (var i = 0; i < callsPerTurn; ++i) binary.Size; },
    function () { for (var i = 0; i < callsPerTurn; ++i) dictionary.Count; });
compare("JScript call, GetByte(0)", "Dictionary, Exists", 1,
    function () { for (var i = 0; i < callsPerTurn; ++i) binary.GetByte(0); },
    function () { for (var i = 0; i < callsPerTurn; ++i) dictionary.Exists("a"); });

// Four times the bytes should take four times as long, not sixteen times. Both arrays are too large for the heap's
// small blocks, which are handed out faster.
var digits = "00";
while (digits.length < 4000000) digits += digits;
var large = service.BinaryObjectFromHex(digits);
var sizes = [500000, 2000000], best = [1e9, 1e9];
for (var turn = 0; turn < turns; ++turn) {
    for (var k = 0; k < 2; ++k) {
        best[k] = Math.min(best[k], millisecondsOf(function () { large.ToArray(0, sizes[k]); }));
    }
}
var ratio = best[1] / best[0];
WScript.Echo(padRight("ToArray, " + sizes[1] + " bytes", 30) + padLeft(best[1], 10) + " ms    " +
    padRight(sizes[0] + " bytes", 28) + padLeft(best[0], 10) + " ms    ratio " + padLeft(ratio.toFixed(2), 6) +
    "  at most  8  " + verdict(ratio <= 8));
