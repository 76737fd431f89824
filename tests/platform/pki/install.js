// Ties certificates to the containers of the GOST providers that have their keys and puts them into "My".
// arguments: the certificates' files, KIND-NUMBER.pem
var service = new ActiveXObject("VetrelCorvane2.CryptoService");
var bytes = new ActiveXObject("VetrelCorvane2.BinaryObjectService");
var types = { gost2001: 75, gost256: 80, gost512: 81 };
var records = JSON.parse(service.GetCryptoProvidersInfo());
for (var i = 0; i < WScript.Arguments.length * records.length; ++i) {
    var file = WScript.Arguments(Math.floor(i / records.length));
    var record = records[i % records.length];
    if (record.type === types[file.split("-")[0]]) {
        var response = bytes.BinaryObjectFromFile(file).ToString(65001);
        service.GetCryptoProvider(record.name, record.type).InstallCertificateResponse(response, "My");
    }
}
