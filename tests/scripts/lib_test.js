// The checks of lib.js must fail when they should, or no test could.
var canceled = { number: 0x80040223 | 0, message: "[35] canceled" };
fails(function () { throw canceled; }, "[35] canceled");
var failing = [
    "check(false)",
    "equal('1', 1)",
    "values([['1', 1], ['1', 2]])",
    "refusals([['1', '[35] ']])",
    "refusals([['throw canceled', '0x80040223', '[36] ']])",
    "throws(function () {}, '0x80040223')",
    "fails(function () { throw { number: 0, message: canceled.message }; }, '[35] ')",
    "wait(function () { throw canceled; })",
    "wait(function (callback) { callback.call(callback, 1); })"
];
var missed = failing.join();
for (var i = 0; i < failing.length; ++i) {
    try {
        eval(failing[i]);
    } catch (error) {
        missed = missed.replace(failing[i], "");
    }
}
if (!/^,*$/.test(missed)) {
    throw new Error("did not fail: " + missed);
}
