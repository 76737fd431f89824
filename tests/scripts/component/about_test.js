// About, beside what the registry says.
var about = create("About");
var build = new ActiveXObject("WScript.Shell").RegRead(
    "HKLM\\Software\\Microsoft\\Windows NT\\CurrentVersion\\CurrentBuildNumber");
check(new RegExp("^[1-9][0-9]*\\.[0-9]+\\." + build + "$").test(about.WinVersion), about.WinVersion);
equal(about.Version, "2.9.9.41");
equal(about.RegVersion, "2.9.9.41");
equal(about.HasAccess, true);
