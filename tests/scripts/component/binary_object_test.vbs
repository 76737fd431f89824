' BinaryObject and BinaryObjectService as VBScript sees them.
Dim service
Set service = CreateObject("VetrelCorvane2.BinaryObjectService")

' Unsigned 32-bit results have to be of a type that VBScript can count, compare and print.
Dim binary, index, total
Set binary = service.BinaryObjectFromHex("0102FF")
Check binary.Size = 3, "Size compares"
Check binary.Size + 1 = 4, "Size counts"
Check CStr(binary.Size) = "3", "Size prints"
total = 0
For index = 0 To binary.Size - 1
    total = total + binary.GetByte(index)
Next
Check total = 258, "bytes by index"
Equal TypeName(binary.GetByte(0)), "Byte", "a byte's type"

' ToArray
Dim bytes, each_byte, text
bytes = binary.ToArray(0, 3)
Check IsArray(bytes), "ToArray is an array"
Check LBound(bytes) = 0 And UBound(bytes) = 2, "its bounds"
Check bytes(2) = 255, "its last element"
For Each each_byte In bytes
    text = text & each_byte & ";"
Next
Equal text, "1;2;255;", "For Each"
Check UBound(binary.ToArray(0, 0)) = -1, "an empty array"

' Variables go by reference.
Dim offset, count, digits, other
offset = 1
count = CLng(1)
digits = "0A"
Set other = service.BinaryObjectFromHex(digits)
Equal other.ToHexString(), "0A", "a text by reference"
bytes = binary.ToArray(offset, count)
Check UBound(bytes) = 0 And bytes(0) = 2, "numbers by reference"
Check Not binary.Equals(other), "an object by reference"
Check binary.Equals(binary), "an object by reference, equal"

' Omitted, Empty and Null
Check binary.GetByte(Empty) = 1, "Empty is 0"
Check service.BinaryObjectFromBase64(Empty).Size = 0, "Empty is a text"

' What Err says; "On Error Goto 0" clears it.
Function Seen()
    Seen = Array(Err.Number, Err.Description, Err.Source)
End Function

Sub ExpectError(raised, number, description, what)
    Check raised(0) = number, what & ": error " & Hex(raised(0)) & ", " & raised(1)
    Check Left(raised(1), Len(description)) = description, what & ": " & raised(1)
    Check Left(raised(2), 15) = "VetrelCorvane2.", what & ": source " & raised(2)
End Sub

Sub ExpectAnyError(raised, what)
    Check raised(0) <> 0, what & ": no error"
End Sub

Dim ignored, raised
On Error Resume Next
ignored = binary.GetByte(3)
raised = Seen()
On Error Goto 0
ExpectError raised, &H80040212, "Байта с указанным индексом не существует", "a byte behind the last"
On Error Resume Next
Set other = service.BinaryObjectFromHex("0g")
raised = Seen()
On Error Goto 0
ExpectError raised, &H8004020B, "[11] Строка содержит недопустимый HEX символ", "no digit"
On Error Resume Next
ignored = binary.ToString(99999)
raised = Seen()
On Error Goto 0
ExpectError raised, &H80040207, "[7] Ошибка при конвертировании ANSI в Unicode (0x57:", "a code page that does not exist"
On Error Resume Next
Set other = service.BinaryObjectFromFile("no such file")
raised = Seen()
On Error Goto 0
ExpectError raised, &H8004021C, "[28] Ошибка при открытии файла (0x2:", "a file that does not exist"

' What the engine itself refuses.
On Error Resume Next
ignored = binary.Equals(Nothing)
raised = Seen()
On Error Goto 0
ExpectAnyError raised, "Nothing for an object"
On Error Resume Next
ignored = binary.GetByte(Null)
raised = Seen()
On Error Goto 0
ExpectAnyError raised, "Null for a number"
On Error Resume Next
ignored = binary.GetByte()
raised = Seen()
On Error Goto 0
ExpectAnyError raised, "no argument"
On Error Resume Next
binary.Size = 1
raised = Seen()
On Error Goto 0
ExpectAnyError raised, "a property that cannot be set"

binary.Reset
Check binary.Size = 0, "Size after Reset"
