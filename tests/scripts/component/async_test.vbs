' Asynchronous calls answer to an object whose default member is a method, and Nothing is no token.
Dim service, stream, good, bad
Set service = CreateObject("VetrelCorvane2.BinaryObjectService")
Set stream = service.CreateStream()
stream.Write service.BinaryObjectFromHex("616263"), 0, 3
stream.Seek 0
Set good = New Answer
service.GetCrc32StreamAsync stream, good, CreateObject("VetrelCorvane2.OperationToken")
good.Wait
Equal good.Value + 0, &H352441C2, "the sum of abc, a number that the language can count with"
Check IsEmpty(good.Failure), "no error comes with a result"

stream.Close
Set bad = New Answer
service.GetMd5StreamAsync stream, bad, Nothing
bad.Wait
Check IsEmpty(bad.Value), "no result comes with an error"
Equal bad.Failure, "[15] Ошибка при определении размера файла (поток закрыт)", "the error"
