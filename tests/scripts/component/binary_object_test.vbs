' What of BinaryObject is different in VBScript: its types of numbers, arrays, references, Err.
Dim service, binary, one
Set service = CreateObject("VetrelCorvane2.BinaryObjectService")
Set binary = service.BinaryObjectFromHex("0102FF")

' Unsigned 32-bit results have to be of a type that VBScript can count, compare and print.
Equal binary.Size, CLng(3), "Size"
Equal CStr(binary.Size + 1), "4", "Size counts and prints"
Equal binary.GetByte(2), CByte(255), "GetByte"
Equal binary.GetByte(Empty), CByte(1), "Empty is 0"
Equal service.BinaryObjectFromBase64(Empty).Size, CLng(0), "Empty is a text"

Dim bytes, text
bytes = binary.ToArray(0, 3)
Equal LBound(bytes) & UBound(bytes) & bytes(2), "02255", "bounds and the last element"
For Each one In bytes
    text = text & one & ";"
Next
Equal text, "1;2;255;", "For Each"
Equal UBound(binary.ToArray(0, 0)), CLng(-1), "an empty array"

' Variables go by reference.
Dim offset, count, digits, other
offset = 1
count = CLng(1)
digits = "0A"
Set other = service.BinaryObjectFromHex(digits)
bytes = binary.ToArray(offset, count)
Equal other.ToHexString() & UBound(bytes) & bytes(0), "0A02", "a text and numbers by reference"
Equal binary.Equals(other), False, "an object by reference"
Equal binary.Equals(binary), True, "an object by reference, equal"

' Checks stand after the errors: one that fails must not be passed over.
Dim outside, source, isNothing, isNull
On Error Resume Next
one = binary.GetByte(3)
outside = Hex(Err.Number) & " " & Err.Description
source = Err.Source
Err.Clear
one = binary.Equals(Nothing)
isNothing = Err.Number
Err.Clear
one = binary.GetByte(Null)
isNull = Err.Number
On Error GoTo 0
Equal outside, "80040212 Байта с указанным индексом не существует", "a byte behind the last"
Equal source, "VetrelCorvane2.BinaryObject.2.9.9", "Err.Source"
Check isNothing <> 0, "Nothing for an object"
Check isNull <> 0, "Null for a number"
