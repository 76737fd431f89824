// What every test script starts with. A check that does not hold throws, which ends the script with status 1.

function create(name) {
    return new ActiveXObject("VetrelCorvane2." + name);
}

// What nearly every test reads and makes bytes with.
var bytes = create("BinaryObjectService");

function check(condition, message) {
    if (!condition) {
        throw new Error(message || "a condition does not hold");
    }
}

// Values of one type and equal.
function equal(actual, expected, message) {
    check(actual === expected, (message ? message + ": " : "") + "expected " + show(expected) + ", got " + show(actual));
}

function show(value) {
    return typeof value === "string" ? JSON.stringify(value) : String(value) + " (" + typeof value + ")";
}

// What a script gets for an argument of another kind; Windows translates the code for the engine.
var mismatch = "0x(80020005|800a000d)";

// `action` must throw an error with that code, a pattern, and a description that begins with `text`.
function throws(action, code, text, message) {
    var thrown = null;
    try {
        action();
    } catch (error) {
        thrown = error;
    }
    check(thrown !== null, (message || text || code) + ": nothing was thrown");
    var number = "0x" + (thrown.number >>> 0).toString(16);
    check(new RegExp("^" + code + "$").test(number), (message || text || "") + ": expected " + code + ", got " + number);
    equal(thrown.message.substr(0, (text || "").length), text || "", message);
}

// An error of the component's own: text "[n] ..." and code 0x80040200 + n.
function fails(action, text, message) {
    throws(action, "0x" + (0x80040200 + parseInt(text.substr(1), 10)).toString(16), text, message);
}

// Rows of an expression over global names and its value.
function values(rows) {
    for (var i = 0; i < rows.length; ++i) {
        equal(eval(rows[i][0]), rows[i][1], rows[i][0]);
    }
}

// Rows of an expression over global names and the error that it throws: "[n] ..." of the component's own, else a code and the
// beginning of a description, which may be left out.
function refusals(rows) {
    for (var i = 0; i < rows.length; ++i) {
        var row = rows[i];
        var action = function () { eval(row[0]); };
        if (row[1].charAt(0) === "[") {
            fails(action, row[1], row[0]);
        } else {
            throws(action, row[1], row[2], row[0]);
        }
    }
}

// The rows of tests/data/scripts: an expression, "=>" and its value or "!>" and its error.
function table(name) {
    var path = WScript.ScriptFullName.replace(/\\tests\\.*/, "\\tests\\data\\scripts\\" + name + ".txt");
    var lines = textOf(create("BinaryObjectService").BinaryObjectFromFile(path)).match(/^[^#\n].*/gm);
    for (var i = 0; i < lines.length; ++i) {
        var row = /^(.*) ([=!])> (.*)$/.exec(lines[i]);
        (row[2] === "=" ? values : refusals)([[row[1]].concat(eval("[" + row[3] + "]"))]);
    }
}

// Serves messages until `condition` holds, at most 100 seconds.
function waitUntil(condition) {
    var end = new Date().getTime() + 100000;
    while (!condition()) {
        check(new Date().getTime() < end, "waited in vain");
        WScript.Sleep(10);
    }
}

// Calls start(callback), waits for the callback and returns its error, or else its result.
function wait(start) {
    var outcome = null;
    start(function (result, error) {
        check(outcome === null, "the callback is called once");
        check(this === arguments.callee, "this is the callback");
        check(result === undefined || error === undefined, "a result and an error exclude each other");
        outcome = { value: error === undefined ? result : error };
    });
    check(outcome === null, "the method returns first");
    waitUntil(function () { return outcome !== null; });
    return outcome.value;
}

// What a call over global names gives to its callback, which it names "done".
function later(call) {
    return wait(function (done) { eval(call); });
}

function hex(digits) {
    return create("BinaryObjectService").BinaryObjectFromHex(digits);
}

function binaryOf(text) {
    return create("BinaryObjectService").BinaryObjectFromString(text, 65001);
}

function textOf(binary) {
    return binary.ToString(65001);
}

// A stream with these bytes, at its beginning.
function streamOf(binary) {
    var stream = create("BinaryObjectService").CreateStream();
    stream.Write(binary, 0, binary.Size);
    stream.Seek(0);
    return stream;
}

// All that a stream holds.
function contentOf(stream) {
    stream.Seek(0);
    return stream.Read(stream.Size);
}
