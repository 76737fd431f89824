// Certificates, collections and stores as a script sees them; the test keys are in the user's stores.
// arguments: the folder of the test data
var data = WScript.Arguments(0) + "/pki/";
var service = new ActiveXObject("VetrelCorvane2.CryptoService");
var bytes = new ActiveXObject("VetrelCorvane2.BinaryObjectService");
var file = function (name) { return bytes.BinaryObjectFromFile(data + name); };
var my = '{"storeName": "My", "storeLocation": "user", "hasPrivateKeyOnly": true, "name": ';

// The certificate and its members
var signer = service.FindCertificate(my + '"Иванов Иван"}');
equal(signer.CommonName, "Иванов Иван");
equal(signer.IssuerName, "Corvane Test Intermediate");
equal(signer.SerialNumber.ToHexString(), "0AB1C2D3E4F506172839");
equal(signer.Hash.Size, 20);
equal(JSON.parse(signer.Description).Hash, signer.Hash.ToHexString());
equal(signer.Content.Equals(file("signer.der")), true);
equal(signer.PublicKeyLength, 2048);
equal(signer.PublicKeyAlgorithm, "1.2.840.113549.1.1.1");
equal(signer.Version, 3);
equal(signer.HasPrivateKey, true);
equal(signer.Archived, false);
equal(signer.GetRdnValue("2.5.4.4"), "Иванов");
equal(signer.GetRdnValue("2.5.4.10", true), "Corvane");
equal(signer.GetRdnValue("2.5.4.11", false), "");
equal(JSON.parse(signer.GetContainerInfo()).providerType, 24);
equal(JSON.parse(signer.GetExtensions()).policies[1], "1.2.643.100.113.2");
equal(signer.GetOnlineCertificateStatusProtocol(), "http://ocsp.example/first");
// The host's clock decides how the moment reads; a day is more than any offset.
var from = new Date(signer.ValidFrom).getTime() - Date.UTC(2020, 0, 1);
check(Math.abs(from) < 86400000, "ValidFrom");
var to = new Date(signer.ValidTo).getTime() - Date.UTC(2049, 11, 31, 23, 59, 59);
check(Math.abs(to) < 86400000, "ValidTo");

// Certificates from content
equal(service.CreateCertificateFromContent(file("signer.pem")).CommonName, "Иванов Иван");
var fromText = bytes.BinaryObjectFromString(file("root.der").ToBase64(), 65001);
var root = service.CreateCertificateFromContent(fromText);
equal(root.Subject.replace(/"/g, ""), "O=Corvane, CN=Corvane Test Root");
equal(root.Issuer, root.Subject);
equal(root.HasPrivateKey, false);
equal(codeOf(throws(function () { root.GetContainerInfo(); }, "[502] ")), "0x800403f6");
equal(codeOf(throws(function () { service.CreateCertificateFromContent(file("root.der")); }, "[326] ")), "0x80040346");
equal(codeOf(throws(function () {
    service.CreateCertificateFromContent(bytes.BinaryObjectFromBase64(""));
})), "0x800405e8");
equal(codeOf(throws(function () { new ActiveXObject("VetrelCorvane2.Certificate").CommonName; }, "[606] ")), "0x8004045e");

// Search
throws(function () { service.FindCertificate(my + '"иванов иван"}'); }, "[607] Сертификат не найден");
throws(function () { service.FindCertificate('{"hash": "0g"}'); }, "[608] Неверный фильтр сертификатов");
equal(service.GetCertificates(my + '"Second Signer"}').count, 1);
check(service.GetCertificates().count > service.GetCertificates('{"storeLocation": "user", "storeName": "My"}').count);

// The collection: Item, enumeration, changes
var list = new ActiveXObject("VetrelCorvane2.CertificateCollection");
equal(list.count, 0);
list.Add(signer);
list.Add(root);
list.Add(signer);
equal(list.count, 3);
equal(list.Item(1).CommonName, "Corvane Test Root");
var names = [];
for (var e = new Enumerator(list); !e.atEnd(); e.moveNext()) {
    names.push(e.item().CommonName);
    list.Clear(); // the enumerator keeps what it began with
}
equal(names.join(), "Иванов Иван,Corvane Test Root,Иванов Иван");
equal(list.count, 0);
list.Add(root);
list.Add(signer);
list.Remove(0);
equal(list.Item(0).CommonName, "Иванов Иван");
var outside = "Сертификата с указанным индексом не существует";
equal(throws(function () { list.Item(1); }).message, outside);
equal(codeOf(throws(function () { list.Item(4294967295); }, outside)), "0x800403f5");
equal(codeOf(throws(function () { list.Remove(1); }, outside)), "0x800403f5");
throws(function () { list.Add(null); });
throws(function () { list.Add(file("signer.der")); });
throws(function () { list.Add({}); });

// A store of the tests' own
var store = new ActiveXObject("VetrelCorvane2.CertificateStore");
equal(codeOf(throws(function () { store.name; }, "[604] ")), "0x8004045c");
throws(function () { store.Open(3, "My", 0); }, "Invalid store location");
store.Open(2, "CorvaneScripts", 1);
equal(store.name, "CorvaneScripts");
equal(store.location, 2);
equal(store.Install(root).Hash.Equals(root.Hash), true);
equal(store.GetCertificates().count >= 1, true);
equal(store.GetCertificates('{"name": "Corvane Test Root", "storeName": "My"}').Item(0).CommonName, "Corvane Test Root");
store.Open(2, "CorvaneScripts", 0);
equal(codeOf(throws(function () { store.Install(root); }, "[611] ")), "0x80040463");
store.Close();
throws(function () { store.Close(); }, "[604] ");
