' The same with VBScript's arrays and references.
' arguments: the document, the signature, the signer's certificate in PEM
Dim service, bytes, document, signature, signer, one(0)
Set service = CreateObject("VetrelCorvane2.CryptoService")
Set bytes = CreateObject("VetrelCorvane2.BinaryObjectService")
Set document = bytes.BinaryObjectFromFile(WScript.Arguments(0))
Set signature = bytes.BinaryObjectFromFile(WScript.Arguments(1))
Set signer = service.CreateCertificateFromContent(bytes.BinaryObjectFromFile(WScript.Arguments(2)))
Set one(0) = signer
Equal CountOf(service.VerifySignature(document, signature, signer)), 1, "a certificate"
Equal CountOf(service.VerifySignature(document, signature, one)), 1, "an array"
Equal CountOf(service.VerifySignature(document, signature, Array(signer, signer))), 1, "an array of two"
On Error Resume Next
service.VerifySignature document, signature, Nothing
Equal Err.Number, &H80040331, "Nothing"
Err.Clear
service.VerifySignature document, signature, Array(5)
Equal Err.Number, 13, "an array of numbers"

Function CountOf(list)
    Dim item
    CountOf = 0
    For Each item In list
        CountOf = CountOf + 1
    Next
End Function
