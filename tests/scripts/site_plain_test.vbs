' In a host without a page, trusted under the host's name.
Equal CreateObject("VetrelCorvane2.About").HasAccess(), True, "CreateObject"
Equal WScript.CreateObject("VetrelCorvane2.About").HasAccess(), True, "WScript.CreateObject"
