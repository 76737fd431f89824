' The numbers of streams as VBScript has them: &HFFFFFFFF is -1, and fractions are doubles.
Dim service, stream, other, data, cases, i, number
Set service = CreateObject("VetrelCorvane2.BinaryObjectService")
Set data = service.BinaryObjectFromHex("0102030405")
Set stream = service.CreateStream()
stream.Write data, 0, 5

Function Outcome(number)
    If Err.Number = &H80040217 Then number = "refused"
    Err.Clear
    Outcome = CStr(number)
End Function

' A number; what is read of it; what Seek makes of it.
cases = Array(Array(2, 2, 2), Array(2.5, "refused", "refused"), Array(-1, "refused", "refused"), _
    Array(&HFFFFFFFF, "refused", "refused"), Array(5E9, 5, "refused"), Array(CByte(3), 3, 3), Array("4", 4, 4))
For i = 0 To UBound(cases)
    stream.Seek 0
    On Error Resume Next
    number = stream.Read(cases(i)(0)).Size
    number = Outcome(number)
    On Error Goto 0
    Check number = CStr(cases(i)(1)), "Read " & cases(i)(0) & ": " & number
    On Error Resume Next
    number = stream.Seek(cases(i)(0))
    number = Outcome(number)
    On Error Goto 0
    Check number = CStr(cases(i)(2)), "Seek " & cases(i)(0) & ": " & number
    ' Writing takes counts as reading does, Resize places as Seek does; 5E9 there is a matter of memory.
    Set other = service.CreateStream()
    On Error Resume Next
    other.Write data, 0, cases(i)(0)
    number = other.Size
    number = Outcome(number)
    On Error Goto 0
    Check number = CStr(cases(i)(1)), "Write " & cases(i)(0) & ": " & number
    If cases(i)(0) <> 5E9 Then
        Set other = service.CreateStream()
        On Error Resume Next
        other.Resize cases(i)(0)
        number = other.Size
        number = Outcome(number)
        On Error Goto 0
        Check number = CStr(cases(i)(2)), "Resize " & cases(i)(0) & ": " & number
    End If
Next
