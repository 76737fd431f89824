' The numbers of streams as VBScript has them: &HFFFFFFFF is -1, and fractions are doubles.
Dim service, stream, data, row, way
Set service = CreateObject("VetrelCorvane2.BinaryObjectService")
Set data = service.BinaryObjectFromHex("0102030405")

Function Tried(way, number)
    Set stream = service.CreateStream()
    If way = "Read" Or way = "Seek" Then stream.Write data, 0, 5
    stream.Seek 0
    On Error Resume Next
    If way = "Read" Then Tried = CStr(stream.Read(number).Size)
    If way = "Seek" Then Tried = CStr(stream.Seek(number))
    If way = "Write" Then stream.Write data, 0, number
    If way = "Resize" Then stream.Resize number
    If Err.Number = &H80040217 Then
        Tried = "refused"
    ElseIf Tried = "" Then
        Tried = CStr(stream.Size)
    End If
End Function

' A number; what is read or written of it; what Seek and Resize make of it, of which 5E9 is a matter of memory.
For Each row In Array(Array(2, "2", "2"), Array(2.5, "refused", "refused"), Array(-1, "refused", "refused"), _
    Array(&HFFFFFFFF, "refused", "refused"), Array(5E9, "5", "refused"), Array(CByte(3), "3", "3"), Array("4", "4", "4"))
    For Each way In Array("Read", "Write", "Seek", "Resize")
        If way = "Read" Or way = "Write" Then
            Equal Tried(way, row(0)), row(1), way & " " & row(0)
        ElseIf way = "Seek" Or row(0) < 1E9 Then
            Equal Tried(way, row(0)), row(2), way & " " & row(0)
        End If
    Next
Next
