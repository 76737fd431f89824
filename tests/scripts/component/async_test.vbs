' Asynchronous calls answer to an object whose default member is a method, and Nothing is no token.
Dim service, stream, token, good, bad
Set service = CreateObject("VetrelCorvane2.BinaryObjectService")
Set token = CreateObject("VetrelCorvane2.OperationToken")
Set stream = service.CreateStream()
stream.Write service.BinaryObjectFromHex("616263"), 0, 3
stream.Seek 0

Set good = New Answer
service.GetMd5StreamAsync stream, good, token
good.Wait
Equal good.Value.ToHexString(), "900150983CD24FB0D6963F7D28E17F72", "the digest of abc"
Check IsEmpty(good.Failure), "no error comes with a result"
Equal token.Progress, 1.0, "Progress"

stream.Seek 0
Set good = New Answer
service.GetCrc32StreamAsync stream, good, token
good.Wait
Equal good.Value + 0, &H352441C2, "the sum of abc, a number that the language can count with"

stream.Close
Set bad = New Answer
service.GetMd5StreamAsync stream, bad, Nothing
bad.Wait
Check IsEmpty(bad.Value), "no result comes with an error"
Equal bad.Failure, "[15] Ошибка при определении размера файла (поток закрыт)", "the error"
