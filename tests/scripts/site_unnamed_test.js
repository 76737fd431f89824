// Nobody is asked about a page whose host could be shown in part only.
// options: --url https://bank.example:x@evil.example/ --untrusted
equal(new ActiveXObject("VetrelCorvane2.About").HasAccess, false, "HasAccess");
fails(function () { new ActiveXObject("VetrelCorvane2.BinaryObjectService").CreateStream(); }, "[32] Невалидный домен", "a call");
fails(function () { new ActiveXObject("VetrelCorvane2.About").Diagnose(); }, "[32] Невалидный домен", "a diagnosis");
