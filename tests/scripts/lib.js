// What every test script starts with. A check that does not hold throws, which ends the script with status 1.

function fail(message) {
    throw new Error(message);
}

function check(condition, message) {
    if (!condition) {
        fail(message || "a condition does not hold");
    }
}

// Values of one type and equal; for anything but plain values compare their JSON.
function equal(actual, expected, message) {
    if (actual !== expected) {
        fail((message ? message + ": " : "") + "expected " + show(expected) + ", got " + show(actual));
    }
}

// `action` must throw; `text`, when given, must be part of the description. Returns what was thrown.
function throws(action, text, message) {
    var thrown = null;
    try {
        action();
    } catch (error) {
        thrown = error;
    }
    var where = message ? message + ": " : "";
    if (thrown === null) {
        fail(where + "nothing was thrown");
    }
    if (text !== undefined && String(thrown.message).indexOf(text) < 0) {
        fail(where + "expected an error with " + show(text) + ", got " + show(thrown.message));
    }
    return thrown;
}

// The unsigned code of an error, as in "0x800403e9".
function codeOf(error) {
    return "0x" + (error.number >>> 0).toString(16);
}

// Serves messages until `condition` holds; fails when that takes longer than `milliseconds` (10 s unless given).
function waitUntil(condition, milliseconds, message) {
    var end = new Date().getTime() + (milliseconds || 10000);
    while (!condition()) {
        if (new Date().getTime() > end) {
            fail(message || "waited in vain");
        }
        WScript.Sleep(10);
    }
}

function show(value) {
    if (typeof value === "string") {
        return JSON.stringify(value);
    }
    return String(value) + " (" + typeof value + ")";
}
