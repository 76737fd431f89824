// BinaryObject and BinaryObjectService as JScript sees them: values, errors, arguments left out.
var service = create("BinaryObjectService");
var nothing = create("BinaryObject");
var abc = binaryOf("abc");
var xml = "<?xml version=\"1.0\" encoding=\"windows-1251\"?><a>\u044F</a>";

function listOf(array) {
    return new VBArray(array).toArray().join(" ");
}

table("binary_object");

// Looking whether an object has a method does not call it; "unknown" is what JScript makes of such a member.
var stream = streamOf(abc);
var token = create("OperationToken");
values([
    ["typeof abc.Reset + typeof abc.ToString + typeof abc.ToHexString", "unknownunknownunknown"],
    ["typeof create('Certificate').Uninstall", "unknown"],
    ["typeof abc.Size + typeof abc.NoSuchMember", "numberundefined"]
]);
var looks = ["!!abc.Reset", "if (stream.Close) 1", "'x' + create('CertificateCollection').Clear", "var f = token.SetCanceled"];
for (var i = 0; i < looks.length; ++i) {
    try {
        eval(looks[i]);
    } catch (error) {
        check(error.number !== 0, "the engine refuses to read it");
    }
}
equal(abc.Size + " " + stream.Position + " " + token.IsCanceled, "3 0 false");
equal((abc.Reset(), abc.Size), 0, "after Reset");
