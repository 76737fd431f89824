' Signs a file with one's own certificate and verifies both kinds of signature, as sign_and_verify.js does.
'
'     cscript //nologo sign_and_verify.vbs FILE [THUMBPRINT]
'
' THUMBPRINT is the SHA-1 thumbprint of the certificate in hexadecimal digits; without it the first one of
' the user's own certificates that has a private key is taken. FILE.p7s and FILE.p7m appear beside FILE.
Option Explicit

Dim crypto, service
Set crypto = CreateObject("VetrelCorvane2.CryptoService")
Set service = CreateObject("VetrelCorvane2.BinaryObjectService")

Function FilterFor(thumbprint)
    FilterFor = "{""storeName"": ""My"", ""storeLocation"": ""user"", ""hasPrivateKeyOnly"": true"
    If thumbprint <> "" Then FilterFor = FilterFor & ", ""hash"": """ & thumbprint & """"
    FilterFor = FilterFor & "}"
End Function

Sub PrintSigners(signers)
    Dim certificate
    For Each certificate In signers
        WScript.Echo "    signed by " & certificate.CommonName
        WScript.Echo "    issued by " & certificate.IssuerName
        WScript.Echo "    thumbprint " & certificate.Hash.ToHexString()
    Next
End Sub

' Whoever verifies asks two things: that the signatures are good, and that the signer is the expected one.
Sub RequireSigner(signers, certificate)
    Dim expected
    expected = False
    If signers.count = 1 Then expected = signers.Item(0).Hash.Equals(certificate.Hash)
    If Not expected Then Err.Raise vbObjectError + 1, "example", "the message is not signed by its certificate"
End Sub

' A changed file must not pass for the signed one.
Sub RequireRefusal(changed, signature)
    Dim refused
    On Error Resume Next
    crypto.VerifySignature changed, signature
    refused = Err.Number <> 0
    If refused Then WScript.Echo "    refused: 0x" & LCase(Hex(Err.Number)) & " " & Err.Description
    On Error Goto 0
    If Not refused Then Err.Raise vbObjectError + 2, "example", "a changed file passes for the signed one"
End Sub

Sub Main(path, thumbprint)
    Dim certificate, data, signature, message, signers
    Set certificate = crypto.FindCertificate(FilterFor(thumbprint))
    WScript.Echo "Certificate: " & certificate.Subject
    WScript.Echo "    valid until " & certificate.ValidTo

    Set data = service.BinaryObjectFromFile(path)
    Set signature = crypto.Sign(data, certificate, True)
    signature.ToFile path & ".p7s"
    Set message = crypto.AttachedSign(data, certificate, True)
    message.ToFile path & ".p7m"

    ' What is verified is what lies on the disk.
    Set signers = crypto.VerifySignature(data, service.BinaryObjectFromFile(path & ".p7s"))
    WScript.Echo "The detached signature is good:"
    PrintSigners signers
    RequireSigner signers, certificate

    Set signers = crypto.VerifyAttachedSignature(service.BinaryObjectFromFile(path & ".p7m"))
    WScript.Echo "The attached signature is good:"
    PrintSigners signers
    RequireSigner signers, certificate

    WScript.Echo "The detached signature with a changed file:"
    RequireRefusal service.BinaryObjectFromHex(data.ToHexString() & "21"), signature
    WScript.Echo "Done."
End Sub

If WScript.Arguments.Count < 1 Then
    WScript.Echo "usage: cscript //nologo sign_and_verify.vbs FILE [THUMBPRINT]"
    WScript.Quit 2
End If
If WScript.Arguments.Count > 1 Then
    Main WScript.Arguments(0), WScript.Arguments(1)
Else
    Main WScript.Arguments(0), ""
End If
