// Whichever way a script creates an object, the object learns the address of its host.
// options: --url https://www.example.org:8443/page
equal(new ActiveXObject("VetrelCorvane2.About").HasAccess(), true, "new ActiveXObject");
equal(WScript.CreateObject("VetrelCorvane2.About").HasAccess(), true, "WScript.CreateObject");
