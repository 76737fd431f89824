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
table("certificates");
function rowsOf(name) {
    return textOf(file(name)).match(/^[^#\n].*/gm);
}
var facts = rowsOf("facts.txt").concat(rowsOf("json.txt"));
for (var i = 0; i < facts.length; ++i) {
    var cells = facts[i].split("\t");
    var one = fromFile((cells[3] ? cells[0] : cells[1]) + ".der");
    equal(cells[3] ? [cells[0], one.Hash.ToHexString(), one.SerialNumber.ToHexString(), one.PublicKeyLength].join("\t")
        : JSON.stringify(JSON.parse(cells[0] === "description" ? one.Description : one.GetExtensions())),
        cells[3] ? facts[i] : JSON.stringify(JSON.parse(cells[2])), facts[i]);
}

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
    ["list.Add(null)", mismatch]
]);

// A store of the tests' own
var store = create("CertificateStore");
refusals([["store.name", "[604] "], ["store.Open(3, 'My', 0)", "0x800405e8", "Invalid store location"], ["store.Open(0, 'My', 0)", "0x800405e8"]]);
store.Open(2, "CorvaneScripts", 1);
values([["store.name", "CorvaneScripts"], ["store.location", 2], ["store.Install(root).Hash.Equals(root.Hash)", true]]);
var installed = store.Install(fromFile("second.der"));
equal(store.GetCertificates('{"name": "Second Signer"}').count, 1);
installed.Uninstall();
equal(store.GetCertificates('{"name": "Second Signer"}').count, 0);
equal(installed.CommonName, "Second Signer", "what was taken out of the store is still there");
refusals([["store.Open(2, 'CorvaneScripts\\0x', 0)", "[603] "]]);
equal(store.name, "CorvaneScripts", "a store that cannot be opened leaves the open one");
equal(store.GetCertificates('{"name": "Corvane Test Root", "storeName": "My"}').Item(0).CommonName, "Corvane Test Root");
store.Open(2, "CorvaneScripts");
refusals([["store.Install(root)", "[611] "]]); // opened without a word it is for reading
store.Close();
store.Close();
refusals([["store.name", "[604] "], ["store.Install(root)", "[604] "], ["store.GetCertificates()", "[604] "]]);
