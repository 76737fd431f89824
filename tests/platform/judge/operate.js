// Carries out a list of operations through the component and tells what came of each.
// argument: a JSON file, a list of objects: the name of an operation below and what it is about. Prints a line for each: "ok" with
// what the operation says, or the error's text.
var crypto = create("CryptoService");
var files = create("FileSystemService");
var streams = []; // of the operation, closed behind it

function certificate(name) { // of a leaf, with its key
    return crypto.FindCertificate(JSON.stringify({ name: "Leaf " + name, storeName: "My", hasPrivateKeyOnly: true }));
}

function load(path) {
    return path ? bytes.BinaryObjectFromFile(path) : null;
}

function open(path, forWriting) {
    var stream = forWriting ? files.OpenFile(path, 0xC0000000, 2) : files.OpenFile(path);
    streams.push(stream);
    return stream;
}

function namesOf(collection) {
    var names = [];
    for (var i = 0; i < collection.count; ++i) {
        names.push(collection.Item(i).CommonName.replace("Leaf ", ""));
    }
    return names.join(" ");
}

function recipients(names) {
    var list = [];
    for (var i = 0; i < names.length; ++i) {
        list.push(certificate(names[i]));
    }
    return list;
}

function report(text) {
    var told = JSON.parse(text);
    var words = [told.verdict];
    for (var i = 0; i < told.signers.length; ++i) {
        var signer = told.signers[i];
        words.push([signer.certificate ? signer.certificate.CN.replace("Leaf ", "") : signer.serialNumber || signer.keyIdentifier,
            signer.verdict, String(signer.digestAgrees), String(signer.signatureGood)].join("/"));
    }
    return words.join(" ");
}

// Without attributes a detached message ends with just its signature, so a raw one put into another's place makes a message.
function withRaw(model, signature) {
    return hex(model.ToHexString().slice(0, -2 * signature.Size) + signature.ToHexString());
}

// Of messages of one size, one behind the other: how many are not taken for good, and the numbers of those that are.
function sweep(isGood) {
    var from = open(step.message), refused = 0, taken = "";
    for (var i = 0; i < from.Size / step.data; ++i) {
        var one = from.Read(step.data);
        var told = outcome(function () { return isGood(one) ? "good" : ""; });
        check(/^(ok|ok good|\[3.*)$/.test(told), told);
        refused += told === "ok good" ? 0 : 1;
        taken += told === "ok good" ? " " + i : "";
    }
    return refused + taken;
}

// What is done with bytes, and with streams; what both can do must come to the same.
var operations = {
    sign: ["crypto[step.attached ? 'AttachedSign' : 'Sign'](load(step.data), certificate(step.signer), step.chain).ToFile(step.output)"],
    signStream: ["", "crypto.SignStreamAsync(open(step.data), open(step.output, true), certificate(step.signer), step.attached, done, undefined, step.chain)"],
    rawSign: ["withRaw(load(step.message), crypto.RawSign(load(step.data), certificate(step.signer))).ToFile(step.output); crypto.VerifySignature(load(step.data), load(step.output))"],
    addSigner: ["crypto.AddSignerToSignature(load(step.message), load(step.data), certificate(step.signer), step.chain).ToFile(step.output)"],
    verify: ["crypto.VerifySignature(load(step.data), load(step.message))", "crypto.VerifyStreamSignatureAsync(open(step.data), load(step.message), done)"],
    verifyAttached: ["crypto.VerifyAttachedSignature(load(step.message))", "crypto.VerifyStreamAttachedSignatureAsync(open(step.message), done)"],
    inspect: ["crypto.InspectSignature(load(step.message), load(step.data))",
        "crypto.InspectStreamSignatureAsync(open(step.data || step.message), step.data ? load(step.message) : null, done)"],
    certificates: ["crypto.GetCertificatesFromSignature(load(step.message))", "crypto.ExtractCertificatesFromSignature(open(step.message), done)"],
    content: ["crypto.GetContentFromSignature(load(step.message)).ToFile(step.output + '-bytes')",
        "crypto.ExtractContentFromSignature(open(step.message), open(step.output, true), done)"],
    encrypt: ["crypto.Encrypt(load(step.data), recipients(step.recipients)).ToFile(step.output)"],
    encryptStream: ["", "crypto.EncryptStreamAsync(open(step.data), open(step.output, true), recipients(step.recipients), done)"],
    decrypt: ["crypto.Decrypt(load(step.message)).ToFile(step.output + '-bytes')", "crypto.DecryptStreamAsync(open(step.message), open(step.output, true), done)"],
    verifyEach: ["sweep(function (one) { return crypto.VerifyAttachedSignature(one); })"],
    inspectEach: ["sweep(function (one) { return report(crypto.InspectSignature(one)).substr(0, 5) === 'good '; })"]
};

function outcome(action) {
    try {
        var result = action();
        var words = result && result.count !== undefined ? namesOf(result) : /^{/.test(result) ? report(result) : result;
        return words ? "ok " + words : "ok";
    } catch (error) {
        return error.message;
    }
}

function perform(forms) {
    var told = forms[0] && outcome(function () { return eval(forms[0]); });
    var other = forms[1] && outcome(function () {
        var result = later(forms[1]);
        check(typeof result !== "string" || result.charAt(0) === "{", result);
        return result;
    });
    var isSame = !told || !other || told === other || (told.charAt(0) === "[" && other.charAt(0) === "[");
    return isSame ? told || other : told + ", of streams: " + other;
}

var plan = JSON.parse(textOf(load(WScript.Arguments(0))));
var step;
for (var i = 0; i < plan.length; ++i) {
    step = plan[i];
    WScript.Echo(perform(operations[step.operation]).replace(/[\r\n]+/g, " "));
    while (streams.length) {
        streams.pop().Close();
    }
}
