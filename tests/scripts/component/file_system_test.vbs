' Files and folders as a script sees them.
Option Explicit

Dim files, bytes, folder, file, text, day
day = DateSerial(2020, 2, 3) + TimeSerial(4, 5, 6)
Set files = CreateObject("VetrelCorvane2.FileSystemService")
Set bytes = CreateObject("VetrelCorvane2.BinaryObjectService")
folder = files.GetTempFolder() & "проба " & Replace(CStr(Timer), ".", "") & CStr(Int(Rnd * 1000000))

files.CreateFolder folder & "\a\b"
Check files.FolderExists(folder & "\a\b"), "the folder is there"
Const GENERIC_READ = &H80000000
Const GENERIC_WRITE = &H40000000
Set file = files.OpenFile(folder & "\a\файл.txt", GENERIC_READ Or GENERIC_WRITE, 1, 0)
Equal file.Name, "файл.txt", "file.Name"
Equal file.Path, folder & "\a\файл.txt", "file.Path"
file.Write bytes.BinaryObjectFromString("привет", 1251), 0, 6
Equal file.Size, CDbl(6), "file.Size"
file.Seek 0
Equal file.Read(100).ToString(1251), "привет", "file.Read"
file.WriteDate = day
Equal CStr(file.WriteDate), CStr(day), "CStr"
file.Flush
file.Close
Equal files.GetLength(folder & "\a\файл.txt"), CDbl(6), "files.GetLength"
Equal CStr(files.GetWriteDate(folder & "\a\файл.txt")), CStr(day), "CStr"
files.SetAttributes folder & "\a\файл.txt", 1
Equal files.GetAttributes(folder & "\a\файл.txt") And 1, CLng(1), "files.GetAttributes"
files.SetAttributes folder & "\a\файл.txt", 128
files.Copy folder & "\a\файл.txt", folder & "\a\b\copy.txt"
files.Move folder & "\a\b\copy.txt", folder & "\moved.txt"
Equal files.FileExists(folder & "\a\b\copy.txt"), False, "files.FileExists"
Equal files.FileExists(folder & "\moved.txt"), True, "files.FileExists"
text = files.List(folder, "*.txt")
Check InStr(text, """moved.txt""") > 0 And InStr(text, """a""") = 0, "the list: " & text

' Checks stand outside: one that fails must not be passed over.
Dim copyError, deleteError, deleteText, openError
On Error Resume Next
files.Copy folder & "\moved.txt", folder & "\a\файл.txt"
copyError = Err.Number
Err.Clear
files.DeleteFolder folder
deleteError = Err.Number
deleteText = Err.Description
Err.Clear
Set file = files.OpenFile(folder & "\no.txt")
openError = Err.Number
On Error GoTo 0
Equal copyError, &H80040211, "a copy onto a file"
Equal deleteError, &H8004022C, "a folder with contents"
Check InStr(deleteText, "[44] Ошибка при удалении директории (0x91:") = 1, deleteText
Equal openError, &H8004021C, "a file that is not there"

files.Delete folder & "\moved.txt"
files.DeleteFolder folder, True
Equal files.FolderExists(folder), False, "files.FolderExists"
