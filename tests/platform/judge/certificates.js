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
var root = fromHex(file("root.der").ToHexString());
equalAll([
    ["CommonName", "Иванов Иван", signer.CommonName],
    ["IssuerName", "Corvane Test Intermediate", signer.IssuerName],
    ["SerialNumber", "0AB1C2D3E4F506172839", signer.SerialNumber.ToHexString()],
    ["Hash and Description", JSON.parse(signer.Description).Hash, signer.Hash.ToHexString()],
    ["Hash", 20, signer.Hash.Size],
    ["Content", true, signer.Content.Equals(file("signer.der"))],
    ["PublicKeyLength", 2048, signer.PublicKeyLength],
    ["PublicKeyAlgorithm", "1.2.840.113549.1.1.1", signer.PublicKeyAlgorithm],
    ["Version", 3, signer.Version],
    ["HasPrivateKey", true, signer.HasPrivateKey],
    ["HasPrivateKey of content alone", false, root.HasPrivateKey],
    ["Archived", false, signer.Archived],
    ["GetRdnValue", "Иванов", signer.GetRdnValue("2.5.4.4")],
    ["GetRdnValue of the issuer", "Corvane", signer.GetRdnValue("2.5.4.10", true)],
    ["GetRdnValue that is not there", "", signer.GetRdnValue("2.5.4.11", false)],
    ["GetRdnValue of no identifier", "", signer.GetRdnValue("no identifier", true)],
    ["Subject", "O=Corvane, CN=Corvane Test Root", root.Subject.replace(/"/g, "")],
    ["Issuer of its own", "O=Corvane, CN=Corvane Test Root", root.Issuer.replace(/"/g, "")],
    ["Issuer", true, /CN=Corvane Test Intermediate/.test(signer.Issuer.replace(/"/g, ""))],
    ["GetContainerInfo", '{"containerName":"corvane-' + signer.Hash.ToHexString() +
        '","providerName":"Microsoft Enhanced RSA and AES Cryptographic Provider","providerType":24}',
        JSON.stringify(JSON.parse(signer.GetContainerInfo()))],
    ["GetExtensions", "1.2.643.100.113.2", JSON.parse(signer.GetExtensions()).policies[1]],
    ["GetOnlineCertificateStatusProtocol", "http://ocsp.example/first", signer.GetOnlineCertificateStatusProtocol()],
    ["GetOnlineCertificateStatusProtocol without one", "",
        fromHex(file("second.der").ToHexString()).GetOnlineCertificateStatusProtocol()],
    ["GetOnlineCertificateStatusProtocol of version 1", "",
        fromHex(file("legacy.der").ToHexString()).GetOnlineCertificateStatusProtocol()],
    ["ValidFrom", true, Math.abs(new Date(signer.ValidFrom) - Date.UTC(2020, 0, 1)) < day],
    ["ValidTo", true, Math.abs(new Date(signer.ValidTo) - Date.UTC(2049, 11, 31, 23, 59, 59)) < day],
    ["CreateCertificateFromContent in PEM", "Иванов Иван",
        service.CreateCertificateFromContent(file("signer.pem")).CommonName]
]);
fails(function () { root.GetContainerInfo(); }, "[502] ");
fails(function () { service.CreateCertificateFromContent(file("root.der")); }, "[326] ", "DER is taken for text");
fails(function () { service.CreateCertificateFromContent(binaryOf("@@@@")); }, "[326] ");
fails(function () { fromHex("0102"); }, "[606] ");
fails(function () { fromHex(file("root.der").ToHexString().slice(0, -2)); }, "[606] ");
fails(function () { service.CreateCertificateFromContent(hex("1E00")); }, "[606] ", "0x1E is passed on as encoded");
throws(function () { service.CreateCertificateFromContent(hex("")); }, "0x800405e8");
fails(function () { create("Certificate").CommonName; }, "[606] ");

// Search
fails(function () { service.FindCertificate(my + '"иванов иван"}'); }, "[607] Сертификат не найден");
fails(function () { service.GetCertificates('{"storeName": "My\\u0000x"}'); }, "[603] ");
fails(function () { service.GetCertificates('{"hash": "0g"}'); }, "[608] Неверный фильтр сертификатов");
equal(service.GetCertificates(my + '"Second Signer"}').count, 1);
check(service.GetCertificates(new Array(100001).join("[")).count > 0, "what is no object filters nothing, however deep it is");
check(service.GetCertificates().count > service.GetCertificates('{"storeLocation": "user", "storeName": "My"}').count);
check(service.FindCertificate().CommonName.length > 0, "no query finds any");

// The collection: Item, enumeration, changes
var list = create("CertificateCollection");
list.Add(signer);
list.Add(root);
list.Add(signer);
equal(list.count, 3);
equal(list.Item(1).CommonName, "Corvane Test Root");
equal(namesOf(list), "Иванов Иван,Corvane Test Root,Иванов Иван");
equal(list.count, 0, "Clear");
list.Add(root);
list.Add(signer);
list.Remove(0);
equal(list.Item(0).CommonName, "Иванов Иван");
var outside = "Сертификата с указанным индексом не существует";
throws(function () { list.Item(1); }, "0x800403f5", outside);
throws(function () { list.Item(4294967295); }, "0x800403f5", outside);
throws(function () { list.Remove(1); }, "0x800403f5", outside);
throws(function () { list.Add(null); }, mismatch);
throws(function () { list.Add(file("signer.der")); }, "0x80004002");

// A store of the tests' own
var store = create("CertificateStore");
fails(function () { store.name; }, "[604] ");
throws(function () { store.Open(3, "My", 0); }, "0x800405e8", "Invalid store location");
store.Open(2, "CorvaneScripts", 1);
equal(store.name, "CorvaneScripts");
equal(store.location, 2);
equal(store.Install(root).Hash.Equals(root.Hash), true);
throws(function () { store.Install(create("OperationToken")); }, "0x80004002", "", "no certificate");
check(store.GetCertificates().count >= 1, "GetCertificates");
var installed = store.Install(fromHex(file("second.der").ToHexString()));
equal(store.GetCertificates('{"name": "Second Signer"}').count, 1);
installed.Uninstall();
equal(store.GetCertificates('{"name": "Second Signer"}').count, 0);
equal(installed.CommonName, "Second Signer", "what was taken out of the store is still there");
fails(function () { store.Open(2, "CorvaneScripts\u0000x", 0); }, "[603] ", "NUL in a name");
equal(store.name, "CorvaneScripts", "a store that cannot be opened leaves the open one");
equal(store.GetCertificates('{"name": "Corvane Test Root", "storeName": "My"}').Item(0).CommonName, "Corvane Test Root");
store.Open(2, "CorvaneScripts");
fails(function () { store.Install(root); }, "[611] ", "a store opened without a word is for reading");
store.Close();
store.Close();
fails(function () { store.name; }, "[604] ", "closed");
fails(function () { store.Install(root); }, "[604] ", "closed");
fails(function () { store.GetCertificates(); }, "[604] ", "closed");
