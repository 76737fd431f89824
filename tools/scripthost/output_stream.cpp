#include "output_stream.h"

namespace ScriptHost {

OutputStream::OutputStream(Stream stream) {
    addMethod(L"Write",
              [stream](const CallArguments& arguments, VARIANT&) { write(stream, arguments.text(0)); });
    addMethod(L"WriteLine", [stream](const CallArguments& arguments, VARIANT&) {
        write(stream, (arguments.count() == 0 ? std::wstring() : arguments.text(0)) + L'\n');
    });
}

}  // namespace ScriptHost
