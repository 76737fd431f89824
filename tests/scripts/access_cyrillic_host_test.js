// Letters of any alphabet, in either case, make a host name.
// options: --url https://Почта.РФ:8443/ящик?письмо#1
equal(new ActiveXObject("VetrelCorvane2.About").HasAccess(), true);
equal(new ActiveXObject("VetrelCorvane2.BinaryObjectService").BinaryObjectFromHex("D0AF").ToHexString(), "D0AF");
