' Nothing is trusted here, whatever other runs trust at the same time. The question whether it is would last for ever.
' options: --untrusted
Equal CreateObject("VetrelCorvane2.About").HasAccess(), False, "CreateObject"
