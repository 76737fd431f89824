' The dates of files, which VBScript alone can set.
Option Explicit

Dim files, file, path, day
day = DateSerial(2020, 2, 3) + TimeSerial(4, 5, 6)
Set files = CreateObject("VetrelCorvane2.FileSystemService")
Set file = files.CreateTempFile(True)
path = file.Path
file.WriteDate = day
file.CreationDate = day - 1
file.AccessDate = day + 1
Equal CStr(file.WriteDate) & CStr(file.AccessDate), CStr(day) & CStr(day + 1), "the other dates are left alone"
file.Close
Equal CStr(files.GetWriteDate(path)), CStr(day), "GetWriteDate"
Check IsDate(files.GetCreationDate(path)) And IsDate(files.GetAccessDate(path)), "GetCreationDate, GetAccessDate"
files.Delete path
