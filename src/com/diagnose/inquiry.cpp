#include "com/diagnose/inquiry.h"

#include "com/async/async.h"
#include "com/runtime/module.h"
#include "core/check.h"
#include "core/exception_text.h"
#include "core/handles.h"
#include "core/utf8.h"
#include "token/discovery/probe_record.h"

#include <new>
#include <utility>

namespace Corvane::Com {

struct Inquiry::State {
    Json::Value known;
    EventHandle answered;
    Json::Value answer;  // of the other thread until it is answered
    ModuleReference module;
};

namespace {

// What is left until then.
DWORD timeLeft(ULONGLONG until) noexcept {
    const ULONGLONG now = ::GetTickCount64();
    return now < until ? static_cast<DWORD>(until - now) : 0;
}

}  // namespace

std::string errorText(const std::exception& exception) {
    const auto* const failure = dynamic_cast<const Win32Exception*>(&exception);
    return toUtf8(failure ? numberForLog(failure->error()) : textOf(exception));
}

Json::Value answerOf(Json::Value known, const std::function<Json::Value()>& ask) {
    try {
        return ask();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& exception) {
        known["error"] = errorText(exception);
        return known;
    }
}

Inquiry::Inquiry(Json::Value known, std::function<Json::Value()> ask) : state_(std::make_shared<State>()) {
    state_->known = std::move(known);
    state_->answered.attach(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    checkWin32(static_cast<bool>(state_->answered), E_ACTIVEX, L"CreateEventW");
    if (Corvane::detail::isLoaderStuck()) {
        state_->answer = state_->known;
        state_->answer["error"] = "not asked: a token's driver has not come out of the system's loader";
        ::SetEvent(state_->answered.get());
        return;
    }
    detail::runOnWorker([state = state_, ask = std::move(ask)] {
        try {
            state->answer = answerOf(state->known, ask);
            ::SetEvent(state->answered.get());
        } catch (...) {
            // No memory: there is no answer.
        }
    });
}

bool Inquiry::wait(ULONGLONG until) const noexcept {
    return ::WaitForSingleObject(state_->answered.get(), timeLeft(until)) == WAIT_OBJECT_0;
}

Json::Value Inquiry::answer(ULONGLONG until) const {
    if (wait(until))
        return state_->answer;
    Json::Value answer = state_->known;
    answer["error"] = "no answer in time";
    return answer;
}

}  // namespace Corvane::Com
