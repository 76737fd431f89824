#include "compression/oem_text.h"

#ifdef _WIN32
#include "core/wide_text.h"
#else
#include <iconv.h>

#include <stdexcept>
#endif

namespace Corvane::Compression::detail {

#ifdef _WIN32

std::string oemToUtf8(unsigned page, std::string_view text) {
    return toUtf8(multiToWide(page, text));
}

#else

std::string oemToUtf8(unsigned page, std::string_view text) {
    const iconv_t converter = iconv_open("UTF-8", ("CP" + std::to_string(page)).c_str());
    std::string input(text);
    std::string output(3 * text.size(), '\0');  // no character takes more
    char* from = input.data();
    char* to = output.data();
    std::size_t left = input.size();
    std::size_t room = output.size();
    const bool done = iconv(converter, &from, &left, &to, &room) == 0;
    iconv_close(converter);
    if (!done)
        throw std::runtime_error("iconv");
    output.resize(output.size() - room);
    return output;
}

#endif

}  // namespace Corvane::Compression::detail
