' Certificates from VBScript: For Each, indexes, dates, a missing object.
Dim service, list, found, certificate, names, text
Set service = CreateObject("VetrelCorvane2.CryptoService")
Set list = service.GetCertificates("{""storeName"": ""My"", ""storeLocation"": 2, ""hasPrivateKeyOnly"": true}")
names = 0
For Each certificate In list
    names = names + 1
    text = list.Item(names - 1).CommonName
    Equal certificate.CommonName, text, "For Each and Item"
Next
Equal names >= 2, True, "number of certificates"
Set certificate = service.FindCertificate("{""name"": ""Second Signer""}")
Equal Year(certificate.ValidTo) >= 2049, True, "ValidTo"
Equal VarType(certificate.ValidFrom), 7, "a date"
Equal certificate.HasPrivateKey, True, "HasPrivateKey"
