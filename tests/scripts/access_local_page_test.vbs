' A page from a file is never trusted, though its address stands in the list.
' options: --url file:///C:/page.html
Equal CreateObject("VetrelCorvane2.About").HasAccess(), False, "a local page"
