' In VBScript a method without arguments may be written without parentheses.
Dim binary
Set binary = CreateObject("VetrelCorvane2.BinaryObjectService").BinaryObjectFromHex("0A")
Equal binary.ToHexString, "0A", "a method in an expression"
Dim crc
crc = binary.GetCrc32
Equal crc, binary.GetCrc32(), "a method that is assigned"
Equal binary.Size, CLng(1), "a property"
Equal binary.Size(), CLng(1), "a property as a call"
binary.Reset
Equal binary.Size, CLng(0), "a statement"
