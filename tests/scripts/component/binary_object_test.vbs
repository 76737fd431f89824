' What of bytes and streams is different in VBScript: its types of numbers, arrays, calls.
Dim service, binary, one
Set service = CreateObject("VetrelCorvane2.BinaryObjectService")
Set binary = service.BinaryObjectFromHex("0102FF")

' Unsigned 32-bit results have to be of a type that VBScript can count, compare and print.
Equal binary.Size, CLng(3), "Size"
Equal binary.GetByte(2), CByte(255), "GetByte"
Equal binary.GetByte(Empty), CByte(1), "Empty is 0"
Equal service.BinaryObjectFromBase64(Empty).Size, CLng(0), "Empty is a text"

Dim text, other
For Each one In binary.ToArray(0, 3)
    text = text & one & ";"
Next
Equal text, "1;2;255;", "For Each"
Equal UBound(binary.ToArray(0, 0)), CLng(-1), "an empty array"

' A method without arguments may be written without parentheses; an object goes by reference.
Set other = service.BinaryObjectFromHex("0A")
Equal other.ToHexString & binary.Equals(other), "0AFalse", "a method in an expression"
other.Reset
Equal other.Size(), CLng(0), "a statement, and a property as a call"

' Numbers of all kinds: &HFFFFFFFF is -1, and fractions are doubles.
Dim stream, row
Set stream = service.CreateStream()
stream.Resize 5
Function Tried(number)
    On Error Resume Next
    stream.Seek 0
    Tried = stream.Read(number).Size & " " & stream.Seek(number)
    If Err.Number <> 0 Then Tried = Hex(Err.Number)
End Function
For Each row In Array(Array(2, "2 2"), Array(CByte(3), "3 3"), Array("4", "4 4"), Array(2.5, "80040217"), _
    Array(-1, "80040217"), Array(&HFFFFFFFF, "80040217"), Array(5E9, "80040217"))
    Equal Tried(row(0)), row(1), "Read and Seek with " & row(0)
Next
