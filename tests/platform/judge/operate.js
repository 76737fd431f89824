// Carries out a list of operations through the component and tells what came of each.
// argument: a JSON file, a list of lists: the name of an operation below and its arguments. Prints a line for each:
// "ok" with what the operation says, or the error's text.
var crypto = create("CryptoService");
var bytes = create("BinaryObjectService");
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

function finished(start) {
    var result = wait(start);
    if (typeof result === "string" && result.substr(0, 1) !== "{") {
        throw new Error(result);
    }
    return result;
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

var operations = {
    sign: function (data, signer, attached, chain, message) {
        crypto[attached ? "AttachedSign" : "Sign"](load(data), certificate(signer), chain).ToFile(message);
    },
    signStream: function (data, signer, attached, chain, message) {
        finished(function (done) {
            crypto.SignStreamAsync(open(data), open(message, true), certificate(signer), attached, done, undefined, chain);
        });
    },
    // Without attributes a detached message ends with just that, so put into another's place it makes a message.
    rawSign: function (data, signer, message, result) {
        var signature = crypto.RawSign(load(data), certificate(signer)).ToHexString();
        hex(load(message).ToHexString().slice(0, -signature.length) + signature).ToFile(result);
        return operations.verify(result, data);
    },
    addSigner: function (message, data, signer, chain, result) {
        crypto.AddSignerToSignature(load(message), load(data), certificate(signer), chain).ToFile(result);
    },
    verify: function (message, data) {
        return namesOf(data ? crypto.VerifySignature(load(data), load(message)) : crypto.VerifyAttachedSignature(load(message)));
    },
    verifyStream: function (message, data) {
        return namesOf(finished(function (done) {
            if (data) {
                crypto.VerifyStreamSignatureAsync(open(data), load(message), done);
            } else {
                crypto.VerifyStreamAttachedSignatureAsync(open(message), done);
            }
        }));
    },
    inspect: function (message, data) {
        return report(crypto.InspectSignature(load(message), load(data)));
    },
    inspectStream: function (message, data) {
        return report(finished(function (done) {
            crypto.InspectStreamSignatureAsync(open(data || message), data ? load(message) : null, done);
        }));
    },
    certificates: function (message) {
        var here = namesOf(crypto.GetCertificatesFromSignature(load(message)));
        equal(here, namesOf(finished(function (done) { crypto.ExtractCertificatesFromSignature(open(message), done); })));
        return here;
    },
    content: function (message, content) {
        var to = open(content, true);
        finished(function (done) { crypto.ExtractContentFromSignature(open(message), to, done); });
        check(crypto.GetContentFromSignature(load(message)).Equals(contentOf(to)), "both forms give the same");
    },
    encrypt: function (data, names, message) {
        crypto.Encrypt(load(data), recipients(names)).ToFile(message);
    },
    encryptStream: function (data, names, message) {
        finished(function (done) { crypto.EncryptStreamAsync(open(data), open(message, true), recipients(names), done); });
    },
    decrypt: function (message, content) {
        crypto.Decrypt(load(message)).ToFile(content);
    },
    decryptStream: function (message, content) {
        finished(function (done) { crypto.DecryptStreamAsync(open(message), open(content, true), done); });
    },
    // Of messages of one size, one behind the other: how many are not taken for good, and the numbers of those that are.
    sweep: function (method, path, size) {
        var from = open(path), refused = 0, taken = "";
        for (var i = 0; i < from.Size / size; ++i) {
            var message = from.Read(size);
            try {
                if (method === "verify" ? crypto.VerifyAttachedSignature(message) : report(crypto.InspectSignature(message)).substr(0, 5) === "good ") {
                    taken += " " + i;
                    continue;
                }
            } catch (error) {
                check(error.message.substr(0, 2) === "[3", error.message);
            }
            ++refused;
        }
        return refused + taken;
    }
};

var plan = JSON.parse(textOf(load(WScript.Arguments(0))));
for (var i = 0; i < plan.length; ++i) {
    var line;
    try {
        var told = operations[plan[i][0]].apply(null, plan[i].slice(1));
        line = told === undefined ? "ok" : "ok " + told;
    } catch (error) {
        line = error.message;
    }
    while (streams.length) {
        streams.pop().Close();
    }
    WScript.Echo(line.replace(/[\r\n]+/g, " "));
}
