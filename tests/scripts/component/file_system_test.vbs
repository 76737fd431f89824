' The dates of files, which VBScript alone can set.
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
Equal CStr(files.GetWriteDate(path)) & IsDate(files.GetCreationDate(path)), CStr(day) & True, "dates of a path"
Equal CStr(files.GetAccessDate(path)), CStr(day + 1), "GetAccessDate"
files.Delete path
