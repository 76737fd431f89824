// The log of builds for systems other than Windows, where the layers are only tested: it is off.
#include "core/log.h"

namespace Corvane {

bool isLogEnabled(LogLevel) noexcept {
    return false;
}

namespace detail {
namespace {

class NoLogger : public ILogger {
public:
    void write(std::wstring_view) override {}
};

}  // namespace

ILogger& processLogger() {
    static NoLogger logger;
    return logger;
}

LogStamp currentLogStamp() noexcept {
    return {};
}

}  // namespace detail
}  // namespace Corvane
