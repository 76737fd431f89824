// Providers, and searches that answer later; the prefix has keys of all records but one.
var service = create("CryptoService");
var my = { storeName: "My", hasPrivateKeyOnly: true };
function filter(name) {
    my.name = name;
    return JSON.stringify(my);
}

var info = JSON.parse(service.GetCryptoProvidersInfo());
var records = [
    [75, true, "Crypto-Pro GOST R 34.10-2001 Cryptographic Service Provider", "1.2.643.2.2.9", "1.2.643.2.2.19", "1.2.643.2.2.21"],
    [80, true, "Crypto-Pro GOST R 34.10-2012 Cryptographic Service Provider", "1.2.643.7.1.1.2.2", "1.2.643.7.1.1.1.1", "1.2.643.2.2.21"],
    [2, false, "Infotecs Cryptographic Service Provider", "1.2.643.2.2.9", "1.2.643.2.2.19", "1.2.643.2.2.21"],
    [81, true, "Crypto-Pro GOST R 34.10-2012 Strong Cryptographic Service Provider", "1.2.643.7.1.1.2.3", "1.2.643.7.1.1.1.2", "1.2.643.2.2.21"],
    [24, true, "Microsoft Enhanced RSA and AES Cryptographic Provider", "2.16.840.1.101.3.4.2.1", "1.2.840.113549.1.1.1", "2.16.840.1.101.3.4.1.42"]
];
check(info.length > records.length, "others that the system has");
for (var i = 0; i < info.length; ++i) {
    var record = records[i] || [info[i].type, info[i].installed, info[i].name];
    var one = info[i];
    equal([one.type, one.installed, one.name, one.hash, one.publicKey, one.cipher, one["default"]].join("|"),
        record.slice(0, 3).concat(record[3], record[4], record[5], i === 0).join("|"));
    for (var j = 0; j < i; ++j) {
        check(info[j].name !== one.name || info[j].type !== one.type, "told twice: " + one.name);
    }
    if (!one.installed) {
        fails(function () { service.GetCryptoProvider(one.name, one.type); }, "[301] Ошибка при получении криптопровайдера");
        continue;
    }
    var provider = service.GetCryptoProvider(one.name, one.type);
    equal(provider.Name + provider.Type, one.name + one.type);
}
fails(function () { service.GetCryptoProvider("No such provider", 75); }, "[301] ");
fails(function () { service.GetCryptoProvider(records[0][2], 80); }, "[301] ", "another's type");
equal(service.GetDefaultCryptoProvider().Name, records[0][2]);
equal(create("CryptoProvider").Type, 75);

// A provider works with its own kind of keys.
var document = binaryOf("document");
var kinds = { gost2001: 75, gost256: 80, gost512: 81, rsa: 24 };
for (var kind in kinds) {
    var signer = service.FindCertificate(filter("Leaf " + kind + "-1"));
    for (i = 0; i < records.length; ++i) {
        if (records[i][1]) {
            provider = service.GetCryptoProvider(records[i][2], records[i][0]);
            if (records[i][0] === kinds[kind]) {
                var signature = provider.Sign(document, signer);
                equal(provider.VerifySignature(document, signature).count, 1, kind);
                equal(textOf(provider.Decrypt(provider.Encrypt(document, signer))), "document", kind);
            } else {
                fails(function () { provider.Sign(document, signer); }, "[334] ", kind);
                fails(function () { provider.Encrypt(document, signer); }, "[334] ", kind);
            }
        }
    }
    check(service.VerifySignature(document, create("CryptoProvider").Sign(document, signer)).count === 1, kind);
}

// Searches
function laterIn(query) {
    return later("service.FindCertificateAsync(" + JSON.stringify(query) + ", done)");
}
values([
    ["laterIn(filter('Leaf rsa-1')).CommonName", "Leaf rsa-1"],
    ["laterIn(filter('Nobody'))", "[607] Сертификат не найден"],
    ["laterIn('{\"hash\": \"0g\"}').substr(0, 6)", "[608] "],
    ["later('service.GetCertificatesAsync(filter(\"Leaf gost512-2\"), done)').Item(0).CommonName", "Leaf gost512-2"],
    ["later('service.GetCertificatesAsync(filter(\"Nobody\"), done)').count", 0]
]);
refusals([["service.SelectCertificateFromStore('My', 3)", "0x800405e8", "Invalid store location"],
    ["service.SelectCertificateFromStore('My\\u0000x', 2)", "[603] "]]);
