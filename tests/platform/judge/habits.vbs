' Certificates and optional arguments as VBScript has them: Nothing, Empty, Null, arrays, variables that arrive by reference.
Dim service, bytes, key, document, signature, attached, nobody, signers(1), flags, chain, wrong, none(), stripped, failures
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
Check InStr(service.InspectSignature(attached, nobody, signers, flags), """good""") > 0, "inspected"
Equal service.VerifySignature(document, signature, signers).count, CLng(1), "an array"
Equal service.Decrypt(service.Encrypt(document, signers)).ToString(65001), "document", "recipients in an array"

' Nothing is no token.
Class Ignored
    Public Default Sub Callback(result, error)
    End Sub
End Class
bytes.GetMd5StreamAsync bytes.CreateStream(), New Ignored, Nothing

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
