// About, beside what the registry says, which since Windows 10 has the version in numbers; before, as a text.
var about = create("About");
var shell = new ActiveXObject("WScript.Shell");
function read(name) {
    return shell.RegRead("HKLM\\Software\\Microsoft\\Windows NT\\CurrentVersion\\" + name);
}
var version;
try {
    version = read("CurrentMajorVersionNumber") + "." + read("CurrentMinorVersionNumber");
} catch (error) {
    version = read("CurrentVersion");
}
equal([about.WinVersion, about.Version, about.RegVersion, about.HasAccess].join(),
    [version + "." + read("CurrentBuildNumber"), "2.9.9.41", "2.9.9.41", true].join());
