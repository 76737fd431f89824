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

' A method without arguments may be written without parentheses.
Dim crc
Equal other.ToHexString, "0A", "a method in an expression"
crc = other.GetCrc32
Equal crc, other.GetCrc32(), "a method that is assigned"
other.Reset
Equal other.Size(), CLng(0), "a statement, and a property as a call"

' Checks stand after the errors: one that fails must not be passed over.
Dim wrong, failures
On Error Resume Next
one = binary.GetByte(3)
failures = Hex(Err.Number) & " " & Err.Description & " " & Err.Source
For Each wrong In Array(Nothing, Null)
    Err.Clear
    one = binary.Equals(wrong)
    failures = failures & " " & (Err.Number <> 0)
Next
On Error GoTo 0
Equal failures, "80040212 Байта с указанным индексом не существует VetrelCorvane2.BinaryObject.2.9.9 True True", "errors"
