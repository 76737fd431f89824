// Where the file of a PKCS#11 module lies.
#pragma once

#include <string>

namespace cryptoki {

// The full path of a module that is named by its file name alone: that of a module of this name that the
// process has loaded, else the first file in the program's folder, the system's, and those of PATH. Never the
// current folder, which a file dialog may have put anywhere, nor a relative one of PATH. A name that is a
// full path already is only looked at. Empty where there is no such file.
std::wstring findModuleFile(const std::wstring& name);

}  // namespace cryptoki
