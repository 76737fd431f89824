' The operations as VBScript calls them: Nothing, Empty, Null, arrays, and variables that arrive by reference.
Dim service, bytes, key, document, signature, attached, nobody, signers(1), message, flags, chain, failures
Set service = CreateObject("VetrelCorvane2.CryptoService")
Set bytes = CreateObject("VetrelCorvane2.BinaryObjectService")
Set key = service.FindCertificate("{""name"": ""Leaf gost256-1"", ""storeName"": ""My"", ""hasPrivateKeyOnly"": true}")
Set document = bytes.BinaryObjectFromString("document", 65001)
Set nobody = Nothing
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

On Error Resume Next
service.Encrypt document, Nothing
failures = Hex(Err.Number)
Err.Clear
service.Encrypt document, Array(5)
failures = failures & " " & Err.Number
Err.Clear
service.Encrypt document, "text"
failures = failures & " " & Err.Number
On Error GoTo 0
Equal failures, "8004032E 13 13", "no recipients, numbers, a text"
