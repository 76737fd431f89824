// About, beside what the registry says.
var about = create("About");
var shell = new ActiveXObject("WScript.Shell");
function read(name) {
    return shell.RegRead("HKLM\\Software\\Microsoft\\Windows NT\\CurrentVersion\\" + name);
}
// Since Windows 10 the version stands in numbers; before, as a text, which later ones keep at 6.3.
var version;
try {
    version = read("CurrentMajorVersionNumber") + "." + read("CurrentMinorVersionNumber");
} catch (error) {
    version = read("CurrentVersion");
}
equal(about.WinVersion, version + "." + read("CurrentBuildNumber"));
equal(about.Version, "2.9.9.41");
equal(about.RegVersion, "2.9.9.41");
equal(about.HasAccess, true);
