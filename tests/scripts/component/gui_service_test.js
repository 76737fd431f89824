// What never gets as far as a dialog, in a page: who may ask, and what can be asked.
var gui = new ActiveXObject("VetrelCorvane2.GuiService");
var badOptions = "[202] Ошибка параметров диалога (";

// A script's habits. An object becomes the text "[object Object]", a number that of its digits.
var options = [{ title: "Файл" }, 5, true, "{title: 'Файл'}", "[]", "{\"filterIndex\": \"1\"}"];
for (var i = 0; i < options.length; ++i) {
    throws(function () { gui.ShowOpenDialog(options[i]); }, "0x800402ca", badOptions);
    throws(function () { gui.ShowMultipleOpenDialog(options[i]); }, "0x800402ca", badOptions);
    throws(function () { gui.SelectFolderDialog(options[i]); }, "0x800402ca", badOptions);
    throws(function () { gui.ShowSaveDialog("имя.txt", options[i]); }, "0x800402ca", badOptions);
}
throws(function () { gui.ShowOpenDialog("{"); }, "0x800402ca",
    badOptions + "* Line 1, Column 2\n  Missing '}' or object member name\n)");
throws(function () { gui.ShowOpenDialog("{\"filter\": \"Документы|*.doc\"}"); }, "0x800402c9",
    "[201] Неверный формат фильтра диалога");
throws(function () { gui.ShowOpenDialog(null); }, mismatch);
throws(function () { gui.ShowSaveDialog(new Array(261).join("n"), ""); }, "0x800405e8",
    "File name greater then MAX_PATH");
