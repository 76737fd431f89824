// The checks of lib.js must fail when they should, or no test could.
var canceled = { number: 0x80040223 | 0, message: "[35] canceled" };
var failing = [
    function () { check(false); },
    function () { equal("1", 1); },
    function () { equalAll([["same", 1, 1], ["different", 1, 2]]); },
    function () { values([["1", 1], ["1", 2]]); },
    function () { refusals([["1", "[35] "]]); },
    function () { refusals([["throw canceled", "[36] "]]); },
    function () { refusals([["throw canceled", "0x80040223", "[36] "]]); },
    function () { throws(function () {}, "0x80040223"); },
    function () { throws(function () { throw canceled; }, "0x80040223", "[35] done"); },
    function () { fails(function () { throw { number: 0, message: canceled.message }; }, "[35] "); },
    function () { wait(function () { throw canceled; }); },
    function () { wait(function (callback) { callback.call(callback, 1); }); }
];
for (var i = 0; i < failing.length; ++i) {
    var thrown = false;
    try {
        failing[i]();
    } catch (error) {
        thrown = true;
    }
    if (!thrown) {
        throw new Error("did not fail: " + failing[i]);
    }
}
fails(function () { throw canceled; }, "[35] canceled");
