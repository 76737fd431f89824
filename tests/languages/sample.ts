// What an author writes with the declarations: compiled strictly for ES5, then run in both bitnesses. It must print what
// tests/scripts/languages-test expects.
const crypto = new ActiveXObject("VetrelCorvane2.CryptoService");
const service = new ActiveXObject("VetrelCorvane2.BinaryObjectService.2.9.9");
const files = new ActiveXObject("VetrelCorvane2.FileSystemService");

import Corvane = VetrelCorvane2;
type Token = Corvane.OperationToken;

function wait<T>(start: (done: Corvane.Callback<T>, token: Token) => void): T {
    const token = new ActiveXObject("VetrelCorvane2.OperationToken");
    const results: T[] = [], errors: string[] = [];
    start(function (result, error) {
        if (error === undefined) results.push(result);
        else errors.push(error);
    }, token);
    while (results.length + errors.length === 0) WScript.Sleep(10);
    if (errors.length > 0) throw new Error(errors[0]);
    return results[0];
}

const hello = service.BinaryObjectFromString("Hello", 65001);
const mine = crypto.GetCertificates('{"storeName": "My", "hasPrivateKeyOnly": true}');
const signer = mine.Item(0);

const file = files.OpenFile("typed.bin", Corvane.FileAccess.GENERIC_WRITE + Corvane.FileAccess.GENERIC_READ,
    Corvane.FileCreationDisposition.CREATE_ALWAYS);
file.Write(hello, 0, hello.Size);
file.Seek(0);
WScript.Echo(wait<Corvane.BinaryObject>((done, token) => service.GetSHA256StreamAsync(file, done, token)).ToHexString());

file.Seek(0);
const message = service.CreateStream();
wait<undefined>((done, token) => crypto.SignStreamAsync(file, message, signer, true, done, token));
file.Close();
message.Seek(0);
const signers = wait<Corvane.CertificateCollection>((done, token) =>
    crypto.VerifyStreamAttachedSignatureAsync(message, done, token, [signer]));
for (const each = new Enumerator(signers); !each.atEnd(); each.moveNext())
    WScript.Echo(each.item().CommonName + " " + (new Date(each.item().ValidTo).getFullYear() > 2000));

const bytes: number[] = new VBArray(hello.ToArray(1, 2)).toArray();
WScript.Echo(bytes.join(" "));
try {
    wait<Corvane.CertificateCollection>((done) => crypto.VerifySignatureAsync(hello, hello, done));
} catch (error) {
    WScript.Echo((error as Error).message.substr(0, 5));
}
