// What never gets as far as a dialog. A script's habits: an object becomes the text "[object Object]".
var gui = new ActiveXObject("VetrelCorvane2.GuiService");
var methods = ["ShowOpenDialog(", "ShowMultipleOpenDialog(", "SelectFolderDialog(", "ShowSaveDialog('имя.txt', "];
var options = [{ title: "Файл" }, 5, true, "{title: 'Файл'}", "[]", "\"text\"", "\uFEFF{}", "{\"title\": []}", "{\"filter\": {}}",
    "{\"filterIndex\": \"1\"}", "{\"filterIndex\": 2147483648}", "{\"initialDir\": \"C:\\dir\"}", new Array(1000001).join("[")];
var filters = ["Все файлы", "Все файлы|*.*", "|", "a|b|c|", "a|b|c"];
for (var m = 0; m < methods.length; ++m) {
    for (var i = 0; i < options.length; ++i) {
        refusals([["gui." + methods[m] + "options[i])", "[202] Ошибка параметров диалога ("]]);
    }
    for (i = 0; i < filters.length; ++i) {
        refusals([["gui." + methods[m] + "JSON.stringify({ filter: filters[i] }))", "[201] Неверный формат фильтра диалога"]]);
    }
}
refusals([
    ["gui.ShowOpenDialog('{\"title\": []}')", "[202] Ошибка параметров диалога (Type is not convertible to string)"],
    ["gui.ShowOpenDialog('{\"filter\": \"a\\\\u0000b|*.*|\"}')", "[201] "], // three parts
    ["gui.ShowOpenDialog(null)", mismatch]
]);
