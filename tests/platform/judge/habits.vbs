' The operations as VBScript calls them: Nothing, Empty, Null, arrays, and variables that arrive by reference.
Dim service, bytes, key, document, signature, attached, nobody, signers(1), message, flags, chain, wrong, none(), stripped, list, one, position, failures
Set service = CreateObject("VetrelCorvane2.CryptoService")
Set bytes = CreateObject("VetrelCorvane2.BinaryObjectService")
Set key = service.FindCertificate("{""name"": ""Leaf gost256-1"", ""storeName"": ""My"", ""hasPrivateKeyOnly"": true}")
Set document = bytes.BinaryObjectFromString("document", 65001)
Set nobody = Nothing
Set stripped = bytes.BinaryObjectFromFile(WScript.Arguments(1) & "/detached-no-certificate.p7s")
Set signers(0) = key
Set signers(1) = key
chain = True
flags = 0
Set signature = service.Sign(document, key, chain)
Set attached = service.AttachedSign(document, key)
Equal service.VerifySignature(document, signature, nobody).count, CLng(1), "Nothing"
Equal service.VerifySignature(document, signature, Null).count, CLng(1), "Null"
Equal service.VerifySignature(document, signature, Empty).count, CLng(1), "Empty"
Equal service.VerifySignature(document, signature, signers).count, CLng(1), "an array"
Equal service.GetCertificatesFromSignature(signature).count, CLng(2), "the chain"
Equal service.VerifyAttachedSignature(service.AddSignerToSignature(attached, nobody, key, False)).count, CLng(2), "no data"
Equal service.VerifySignature(document, service.AddSignerToSignature(signature, document, key)).count, CLng(2), "data"
Check InStr(service.InspectSignature(attached, nobody, signers, flags), """good""") > 0, "inspected without data"
Check InStr(service.InspectSignature(signature, document), """good""") > 0, "inspected with data"
Set message = service.Encrypt(document, signers)
Equal service.Decrypt(message).ToString(65001), "document", "recipients in an array"
Equal service.Decrypt(service.Encrypt(document, Array(key))).ToString(65001), "document", "recipients in an array of one"


position = 0
Set list = service.GetCertificates("{""storeName"": ""My"", ""storeLocation"": 2, ""hasPrivateKeyOnly"": true}")
For Each one In list
    Equal one.CommonName, list.Item(position).CommonName, "For Each and Item"
    position = position + 1
Next
Check position >= 2, "number of certificates"
Equal VarType(list.Item(0).ValidFrom), 7, "a date"
Check list.Item(0).ValidTo > Date, "ValidTo"

On Error Resume Next
For Each wrong In Array(Nothing, Array(5), "text")
    service.Encrypt document, wrong
    failures = failures & " " & Hex(Err.Number)
    Err.Clear
    service.VerifySignature document, stripped, wrong
    failures = failures & "/" & Hex(Err.Number)
    Err.Clear
Next
service.VerifySignature document, stripped, none
failures = failures & " " & Hex(Err.Number)
On Error GoTo 0
Equal failures, " 8004032E/80040331 D/D D/D 80040331", "nobody, numbers, a text, an array without elements"
