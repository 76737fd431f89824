// What is told of tokens. arguments: the reader's name
var service = create("CryptoService");
var slot = WScript.Arguments(0);
var info = service.GetTokensInfo();
var tokens = JSON.parse(info);
equal(tokens.length, 2);
equal(tokens[0].slot, slot);
equal(tokens[0].model, "Rutoken ECP");
equal(tokens[0].totalMemory, 65536);
equal(tokens[0].certified, true);
equal(tokens[1].slot, "ISBC 0");
equal("certified" in tokens[1], false);
equal(wait(function (callback) { service.GetTokensInfoAsync(callback); }), info);

equal(service.GetTokenContainers(slot).replace(/\s/g, ""), "[]");
throws(function () { service.GetTokenContainers("no such token"); }, "0x80040200", "Не найден указанный слот");
equal(service.GetTokenDriverVersion("00000000000000000000000000000000"), "");
