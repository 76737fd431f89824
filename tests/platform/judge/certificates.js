// Certificates, collections and stores as a script sees them; the test keys are in the user's stores.
// arguments: none of its own, tests/data/pki
var service = create("CryptoService");
var my = '{"storeName": "My", "storeLocation": "user", "hasPrivateKeyOnly": true, "name": ';
var day = 86400000; // the host's clock decides how a moment reads; a day is more than any offset

function file(name) {
    return create("BinaryObjectService").BinaryObjectFromFile(WScript.Arguments(1) + "/" + name);
}

// From the certificate's encoding in hexadecimal, by way of Base64.
function fromHex(digits) {
    return service.CreateCertificateFromContent(binaryOf(hex(digits).ToBase64()));
}

function fromFile(name) {
    return fromHex(file(name).ToHexString());
}

function namesOf(certificates) {
    var names = [];
    for (var e = new Enumerator(certificates); !e.atEnd(); e.moveNext()) {
        names.push(e.item().CommonName);
        certificates.Clear(); // the enumerator keeps what it began with
    }
    return names.join();
}

// The certificate and its members
var signer = service.FindCertificate(my + '"Иванов Иван"}');
var root = fromFile("root.der");
values([
    ["signer.CommonName", "Иванов Иван"],
    ["signer.IssuerName", "Corvane Test Intermediate"],
    ["signer.SerialNumber.ToHexString()", "0AB1C2D3E4F506172839"],
    ["signer.Hash.ToHexString() === JSON.parse(signer.Description).Hash && signer.Hash.Size", 20],
    ["signer.Content.Equals(file('signer.der'))", true],
    ["signer.PublicKeyLength", 2048],
    ["signer.PublicKeyAlgorithm", "1.2.840.113549.1.1.1"],
    ["signer.Version", 3],
    ["signer.HasPrivateKey", true],
    ["root.HasPrivateKey", false],
    ["signer.Archived", false],
    ["signer.GetRdnValue('2.5.4.4')", "Иванов"],
    ["signer.GetRdnValue('2.5.4.10', true)", "Corvane"],
    ["signer.GetRdnValue('2.5.4.11', false)", ""],
    ["signer.GetRdnValue('no identifier', true)", ""],
    ["root.Subject.replace(/\"/g, '')", "O=Corvane, CN=Corvane Test Root"],
    ["root.Issuer.replace(/\"/g, '')", "O=Corvane, CN=Corvane Test Root"],
    ["JSON.stringify(JSON.parse(signer.GetContainerInfo()))", '{"containerName":"corvane-' + signer.Hash.ToHexString() +
        '","providerName":"Microsoft Enhanced RSA and AES Cryptographic Provider","providerType":24}'],
    ["JSON.parse(signer.GetExtensions()).policies[1]", "1.2.643.100.113.2"],
    ["signer.GetOnlineCertificateStatusProtocol()", "http://ocsp.example/first"],
    ["fromFile('second.der').GetOnlineCertificateStatusProtocol()", ""],
    ["fromFile('legacy.der').GetOnlineCertificateStatusProtocol()", ""], // of version 1
    ["Math.abs(new Date(signer.ValidFrom) - Date.UTC(2020, 0, 1)) < day", true],
    ["Math.abs(new Date(signer.ValidTo) - Date.UTC(2049, 11, 31, 23, 59, 59)) < day", true],
    ["service.CreateCertificateFromContent(file('signer.pem')).CommonName", "Иванов Иван"]
]);
refusals([
    ["root.GetContainerInfo()", "[502] "],
    ["service.CreateCertificateFromContent(file('root.der'))", "[326] "], // DER is taken for text
    ["service.CreateCertificateFromContent(binaryOf('@@@@'))", "[326] "],
    ["fromHex('0102')", "[606] "],
    ["fromHex(file('root.der').ToHexString().slice(0, -2))", "[606] "],
    ["service.CreateCertificateFromContent(hex('1E00'))", "[606] "], // 0x1E is passed on as encoded
    ["service.CreateCertificateFromContent(hex(''))", "0x800405e8"],
    ["create('Certificate').CommonName", "[606] "],
    // Search
    ["service.FindCertificate(my + '\"иванов иван\"}')", "[607] Сертификат не найден"],
    ["service.GetCertificates('{\"storeName\": \"My\\\\u0000x\"}')", "[603] "],
    ["service.GetCertificates('{\"hash\": \"0g\"}')", "[608] Неверный фильтр сертификатов"]
]);
equal(service.GetCertificates(my + '"Second Signer"}').count, 1);
check(service.GetCertificates(new Array(100001).join("[")).count > 0, "what is no object filters nothing, however deep it is");
check(service.GetCertificates().count > service.GetCertificates('{"storeLocation": "user", "storeName": "My"}').count);
check(service.FindCertificate().CommonName.length > 0, "no query finds any");

// The collection: Item, enumeration, changes
var list = create("CertificateCollection");
list.Add(signer);
list.Add(root);
list.Add(signer);
values([["list.count", 3], ["list.Item(1).CommonName", "Corvane Test Root"],
    ["namesOf(list)", "Иванов Иван,Corvane Test Root,Иванов Иван"], ["list.count", 0]]);
list.Add(root);
list.Add(signer);
list.Remove(0);
equal(list.Item(0).CommonName, "Иванов Иван");
var outside = "Сертификата с указанным индексом не существует";
refusals([
    ["list.Item(1)", "0x800403f5", outside],
    ["list.Item(4294967295)", "0x800403f5", outside],
    ["list.Remove(1)", "0x800403f5", outside],
    ["list.Add(null)", mismatch],
    ["list.Add(file('signer.der'))", "0x80004002"]
]);

// A store of the tests' own
var store = create("CertificateStore");
refusals([["store.name", "[604] "], ["store.Open(3, 'My', 0)", "0x800405e8", "Invalid store location"]]);
store.Open(2, "CorvaneScripts", 1);
values([["store.name", "CorvaneScripts"], ["store.location", 2], ["store.Install(root).Hash.Equals(root.Hash)", true]]);
var installed = store.Install(fromFile("second.der"));
equal(store.GetCertificates('{"name": "Second Signer"}').count, 1);
installed.Uninstall();
equal(store.GetCertificates('{"name": "Second Signer"}').count, 0);
equal(installed.CommonName, "Second Signer", "what was taken out of the store is still there");
refusals([["store.Install(create('OperationToken'))", "0x80004002"], ["store.Open(2, 'CorvaneScripts\\0x', 0)", "[603] "]]);
equal(store.name, "CorvaneScripts", "a store that cannot be opened leaves the open one");
equal(store.GetCertificates('{"name": "Corvane Test Root", "storeName": "My"}').Item(0).CommonName, "Corvane Test Root");
store.Open(2, "CorvaneScripts");
refusals([["store.Install(root)", "[611] "]]); // opened without a word it is for reading
store.Close();
store.Close();
refusals([["store.name", "[604] "], ["store.Install(root)", "[604] "], ["store.GetCertificates()", "[604] "]]);
