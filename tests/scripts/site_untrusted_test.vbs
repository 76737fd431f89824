' Nothing is trusted here, whatever other runs trust at the same time.
' options: --untrusted
Equal CreateObject("VetrelCorvane2.About").HasAccess(), False, "CreateObject"
Equal WScript.CreateObject("VetrelCorvane2.About").HasAccess(), False, "WScript.CreateObject"
