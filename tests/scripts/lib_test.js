// The checks of lib.js must fail when they should, or no test could.
var failing = {
    check: function () { check(false); },
    equal: function () { equal(1, 2); },
    "equal of other types": function () { equal("1", 1); },
    "throws nothing": function () { throws(function () {}); },
    "throws another text": function () { throws(function () { fail("abc"); }, "xyz"); },
    waitUntil: function () { waitUntil(function () { return false; }, 30); }
};
for (var name in failing) {
    var thrown = null;
    try {
        failing[name]();
    } catch (error) {
        thrown = error;
    }
    if (thrown === null) {
        throw new Error("did not fail: " + name);
    }
}
check(true);
equal("ж", "ж");
equal(throws(function () { fail("abc"); }, "b").message, "abc");
equal(codeOf({ number: 0x800403e9 | 0 }), "0x800403e9");
