// Looking whether an object has a method must not call it.
var bytes = hex("0102");
var stream = streamOf(bytes);
var collection = create("CertificateCollection");
var token = create("OperationToken");

// What JScript calls a member that an object has and does not tell the value of.
equalAll([
    ["typeof of a method", "unknown", typeof bytes.Reset],
    ["typeof of a method with arguments", "unknown", typeof bytes.ToString],
    ["typeof of a method with a result", "unknown", typeof bytes.ToHexString],
    ["typeof of a method of a certificate", "unknown", typeof create("Certificate").Uninstall],
    ["typeof of a property", "number", typeof bytes.Size],
    ["typeof of nothing", "undefined", typeof bytes.NoSuchMember]
]);
function look(value) {
    return !!value;
}
var looks = [
    function () { return look(bytes.Reset); },
    function () { if (stream.Close) { return true; } },
    function () { return "x" + collection.Clear; },
    function () { var f = token.SetCanceled; return f; }
];
for (var i = 0; i < looks.length; ++i) {
    try {
        looks[i]();
    } catch (error) {
        check(error.number !== 0, "the engine refuses to read it");
    }
}
equal(bytes.Size, 2);
equal(stream.Position, 0, "the stream is open");
equal(token.IsCanceled, false);

// A property may be written as a call, and read where its value is not used.
equal(bytes.Size(), 2);
bytes.Size;
token.SetCanceled();
equal(token.IsCanceled(), true);
