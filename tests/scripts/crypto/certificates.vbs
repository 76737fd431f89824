' Certificates from VBScript: For Each, indexes, dates.
Dim service, list, certificate, position
Set service = CreateObject("VetrelCorvane2.CryptoService")
Set list = service.GetCertificates("{""storeName"": ""My"", ""storeLocation"": 2, ""hasPrivateKeyOnly"": true}")
For Each certificate In list
    Equal certificate.CommonName, list.Item(position).CommonName, "For Each and Item"
    position = position + 1
Next
Check position >= 2, "number of certificates"
Set certificate = list.Item(0)
Equal VarType(certificate.ValidFrom), 7, "a date"
Equal Year(certificate.ValidTo) >= 2049, True, "ValidTo"
