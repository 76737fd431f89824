' The same with VBScript's arrays and references.
' arguments: tests/data/pki
Dim service, bytes, document, signature, signer, one(0), none(), failures
Set service = CreateObject("VetrelCorvane2.CryptoService")
Set bytes = CreateObject("VetrelCorvane2.BinaryObjectService")
Set document = bytes.BinaryObjectFromFile(WScript.Arguments(0) & "/document.bin")
Set signature = bytes.BinaryObjectFromFile(WScript.Arguments(0) & "/detached-no-certificate.p7s")
Set signer = service.CreateCertificateFromContent(bytes.BinaryObjectFromFile(WScript.Arguments(0) & "/signer.pem"))
Set one(0) = signer
Equal service.VerifySignature(document, signature, signer).count, CLng(1), "a certificate"
Equal service.VerifySignature(document, signature, one).count, CLng(1), "an array"
Equal service.VerifySignature(document, signature, Array(signer, signer)).count, CLng(1), "an array of two"
On Error Resume Next
service.VerifySignature document, signature, Nothing
failures = Hex(Err.Number)
Err.Clear
service.VerifySignature document, signature, Array(5)
failures = failures & " " & Err.Number
Err.Clear
service.VerifySignature document, signature, none
failures = failures & " " & Hex(Err.Number)
On Error GoTo 0
Equal failures, "80040331 13 80040331", "Nothing, an array of numbers, one without elements"
