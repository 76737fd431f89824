// Nobody is asked about a page whose host could be shown in part only, and nothing is trusted. What the page makes by itself holds
// bytes and nothing more: no file changes, however the bytes came to be.
// options: --url https://bank.example:x@evil.example/ --untrusted
var refused = "[32] Невалидный домен";
var files = new ActiveXObject("Scripting.FileSystemObject");
var path = files.BuildPath(files.GetSpecialFolder(2), files.GetTempName());
files.CreateTextFile(path).Write("kept");
var stream = create("BinaryStream");
stream.Resize(8);
stream.Seek(0);
refusals([
    ["create('BinaryObjectService').CreateStream()", refused],
    ["create('About').Diagnose()", refused],
    ["create('BinaryObject').ToFile(path)", refused],
    ["stream.Read(4).ToFile(path)", refused],
    ["later('stream.ReadAsync(4, done)').ToFile(path)", refused],
    ["later('stream.SeekAndReadAsync(0, 4, done)').ToFile(path)", refused]
]);
equal(create("About").HasAccess, false);
CollectGarbage();
equal(files.OpenTextFile(path).ReadAll(), "kept");
files.DeleteFile(path);
