' Files and folders as a script sees them: dates, attributes, arguments left out.
Option Explicit

Dim files, folder, inner, file, text, day
day = DateSerial(2020, 2, 3) + TimeSerial(4, 5, 6)
Set files = CreateObject("VetrelCorvane2.FileSystemService")
folder = files.GetTempFolder() & "проба " & Replace(CStr(Timer), ".", "") & CStr(Int(Rnd * 1000000))
inner = folder & "\a\файл.txt"

files.CreateFolder folder & "\a\b"
Equal files.FolderExists(folder & "\a\b"), True, "the folder is there"
Set file = files.OpenFile(inner, &HC0000000, 1, 0) ' to read and write, new, for nobody else
Equal file.Name, "файл.txt", "file.Name"
Equal file.Path, inner, "file.Path"
file.Write CreateObject("VetrelCorvane2.BinaryObjectService").BinaryObjectFromString("привет", 1251), 0, 6
Equal file.Size, CDbl(6), "file.Size"
file.Seek 0
Equal file.Read(100).ToString(1251), "привет", "file.Read"
file.WriteDate = day
file.CreationDate = day - 1
file.AccessDate = day + 1
Equal CStr(file.WriteDate) & CStr(file.AccessDate), CStr(day) & CStr(day + 1), "the other dates are left alone"
file.Flush
file.Close
Equal files.GetLength(inner), CDbl(6), "GetLength"
Equal CStr(files.GetWriteDate(inner)), CStr(day), "GetWriteDate"
Check IsDate(files.GetCreationDate(inner)) And IsDate(files.GetAccessDate(inner)), "GetCreationDate, GetAccessDate"
files.SetAttributes inner, 1
Equal files.GetAttributes(inner) And 1, CLng(1), "GetAttributes"
files.SetAttributes inner, 128
files.Copy inner, folder & "\a\b\copy.txt"
files.Move folder & "\a\b\copy.txt", folder & "\moved.txt"
Equal files.FileExists(folder & "\a\b\copy.txt"), False, "what was moved"
Equal files.FileExists(folder & "\moved.txt"), True, "where it went"
text = files.List(folder, "*.txt")
Check InStr(text, """moved.txt""") > 0 And InStr(text, """a""") = 0, "the list: " & text
text = files.List(folder)
Check InStr(text, """moved.txt""") > 0 And InStr(text, """a""") > 0, "the whole list: " & text
Set file = files.CreateTempFile()
text = file.Path
file.Close
Equal files.FileExists(text), False, "a temporary file that is not kept"

' Checks stand after the errors: one that fails must not be passed over.
Dim copyError, moveError, deleteError, deleteText, openError, writeError
On Error Resume Next
files.Copy folder & "\moved.txt", inner
copyError = Err.Number
Err.Clear
files.Move folder & "\moved.txt", inner
moveError = Err.Number
Err.Clear
files.DeleteFolder folder
deleteError = Err.Number
deleteText = Err.Description
Err.Clear
Set file = files.OpenFile(folder & "\no.txt")
openError = Err.Number
Err.Clear
files.OpenFile(inner).Resize 0
writeError = Err.Number
On Error GoTo 0
Equal copyError, &H80040211, "a copy onto a file"
Check moveError <> 0, "a file moved onto another"
Equal deleteError, &H8004022C, "a folder with contents"
Check InStr(deleteText, "[44] Ошибка при удалении директории (0x91:") = 1, deleteText
Equal openError, &H8004021C, "a file that is not there"
Check writeError <> 0, "a file opened without a word is for reading"

files.Copy folder & "\moved.txt", inner, True
files.Delete folder & "\moved.txt"
files.DeleteFolder folder, True
Equal files.FolderExists(folder), False, "what was deleted"
