// What the component is told by the registry, for the policies' test: whether the page is trusted, or, with an argument, how
// it is set up.
var about = new ActiveXObject("VetrelCorvane2.About");
if (WScript.Arguments.length === 0) {
    WScript.Echo(JSON.stringify(about.HasAccess));
} else {
    var report = JSON.parse(about.Diagnose());
    WScript.Echo(JSON.stringify([report.settings.LogLevel, report.log.level, report.log.path, report.drivers[0].name,
        report.registered.path + about.RegVersion]));
}
