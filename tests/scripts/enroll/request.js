// Makes a key and asks for a certificate for it.
// arguments: the name of the container, the folder for request.der, path.txt and plain.der
var service = create("CryptoService");
var bytes = create("BinaryObjectService");
var container = WScript.Arguments(0);
var folder = WScript.Arguments(1) + "/";

var name = service.EncodeDistinguishedName('CN=Петров Пётр,O="ООО ""Ромашка""",SNILS=12345678901,INN=001234567890,C=RU');
var extensions = service.EncodeExtensions(JSON.stringify({
    keyUsage: ["digitalSignature", "nonRepudiation"],
    extendedKeyUsage: ["clientAuth", "emailProtection"],
    policies: ["1.2.643.100.113.1"],
    subjectAltName: [{ email: "petr@example.org" }]
}));
var password = hex("3010" + "06092A864886F70D010907" + "31030C0161"); // challengePassword "a" (RFC 2985)

var result = JSON.parse(service.CreateCertificationRequestExV2(container, 1, name, extensions, password, true, true));
check(result.path.slice(-container.length - 1) === "\\" + container, result.path);
check(!("token" in result), "a container in the registry lies on no token");
var request = bytes.BinaryObjectFromBase64(result.request);
request.ToFile(folder + "request.der");
binaryOf(result.path).ToFile(folder + "path.txt");

var told = JSON.parse(service.DecodeCertificationRequest(request));
equal(told.subject, 'CN=Петров Пётр,O=ООО \\"Ромашка\\",SNILS=12345678901,INN=001234567890,C=RU');
equal(told.signatureValid, true);
equal(told.publicKeyAlgorithm, "1.2.643.2.2.19");
equal(told.keyUsages.join(), "digitalSignature,nonRepudiation");
equal(told.attributes.length, 2);
equal(told.attributes[1].values[0], "DAFh");
var digits = request.ToHexString();
var changed = digits.replace("310B3009060355040613025255", "310B3009060355040613025553"); // the country
check(changed !== digits);
var refused = JSON.parse(service.DecodeCertificationRequest(hex(changed)));
equal(refused.signatureValid, false);
check(!("signatureError" in refused));

// The same by a provider of one's own choice, without extras; a key that may not leave.
var provider = service.GetDefaultCryptoProvider();
provider.CreateCertificationRequest(container + " plain", 1, name, extensions, 1, true).ToFile(folder + "plain.der");

fails(function () { service.CreateCertificationRequest(container, 1, name, extensions, false, true); },
    "[301] Ошибка при получении криптопровайдера");
fails(function () { service.EncodeDistinguishedName("CN=a,ИНЛ=1"); },
    "[614] Неверное имя субъекта (символ 6: неизвестный атрибут)");
fails(function () { service.EncodeExtensions('{"keyUsages": []}'); }, "[615] ");
fails(function () { service.DecodeCertificationRequest(name); }, "[616] ");
