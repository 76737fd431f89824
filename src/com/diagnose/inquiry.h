// A question to the machine that may never be answered: it is asked on another thread, and who asks waits no
// longer than he wants.
#pragma once

#include <json/value.h>

#include <windows.h>

#include <exception>
#include <functional>
#include <memory>
#include <string>

namespace Corvane::Com {

// The system's number and text where it is a failed call of the system, else the message of the exception.
std::string errorText(const std::exception& exception);

// What `ask` returns, or `known`, an object or null, with the member "error" where it throws. Throws
// std::bad_alloc only.
Json::Value answerOf(Json::Value known, const std::function<Json::Value()>& ask);

// Used by one thread.
class Inquiry {
public:
    // Starts to ask. `ask` owns what it works with: nobody waits for its end, and only the module stays as
    // long. While a token's driver is stuck in the system's loader nothing is asked, since no thread would
    // come to begin. Throws std::bad_alloc; Win32Exception E_ACTIVEX.
    Inquiry(Json::Value known, std::function<Json::Value()> ask);

    // Waits until it is answered, or until the system's running, in milliseconds, has reached `until`.
    bool wait(ULONGLONG until) const noexcept;

    // What answerOf() says; without an answer in time `known` and an error that says so.
    Json::Value answer(ULONGLONG until) const;

private:
    struct State;
    std::shared_ptr<State> state_;
};

}  // namespace Corvane::Com
