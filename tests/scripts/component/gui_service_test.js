// What never gets as far as a dialog: what can be asked. A script's habits: an object becomes the text "[object Object]".
var gui = new ActiveXObject("VetrelCorvane2.GuiService");
var options = [{ title: "Файл" }, 5, true, "{title: 'Файл'}", "[]", "{\"filterIndex\": \"1\"}"];
var methods = ["ShowOpenDialog(", "ShowMultipleOpenDialog(", "SelectFolderDialog(", "ShowSaveDialog('имя.txt', "];
for (var i = 0; i < options.length; ++i) {
    for (var m = 0; m < methods.length; ++m) {
        refusals([["gui." + methods[m] + "options[i])", "[202] Ошибка параметров диалога ("]]);
    }
}
refusals([
    ["gui.ShowOpenDialog('{')", "[202] Ошибка параметров диалога (* Line 1, Column 2\n  Missing '}' or object member name\n)"],
    ["gui.ShowOpenDialog('{\"filter\": \"Документы|*.doc\"}')", "[201] Неверный формат фильтра диалога"],
    ["gui.ShowOpenDialog(null)", mismatch],
    ["gui.ShowSaveDialog(new Array(261).join('n'), '')", "0x800405e8", "File name greater then MAX_PATH"]
]);
