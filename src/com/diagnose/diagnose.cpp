#include "com/diagnose/diagnose.h"

#include "com/diagnose/driver_report.h"
#include "com/diagnose/inquiry.h"
#include "com/diagnose/machine_report.h"
#include "com/runtime/module.h"
#include "com/runtime/registration.h"
#include "com/runtime/version_text.h"
#include "core/json.h"
#include "core/log.h"
#include "core/utf8.h"
#include "core/windows_version.h"

#include <utility>
#include <vector>

namespace Corvane::Com {
namespace {

// In milliseconds from the beginning. What loads libraries of the system comes before the drivers, one of
// which may keep the loader busy.
constexpr ULONGLONG headStart = 1500;
constexpr ULONGLONG endOfDrivers = 17'000;
constexpr ULONGLONG endOfAll = 18'000;

// The parts that are asked for at the same time.
struct Inquiries {
    Inquiry registration;
    Inquiry log;
    std::vector<Inquiry> providers;
    Inquiry readers;
    Inquiry service;

    static Inquiries start();

    void wait(ULONGLONG until) const {
        for (const Inquiry* each : {&registration, &log, &readers, &service})
            each->wait(until);
        for (const Inquiry& each : providers)
            each.wait(until);
    }

    void answer(Json::Value& report, ULONGLONG until) const {
        report["registered"] = registration.answer(until);
        report["log"] = log.answer(until);
        Json::Value& list = report["providers"] = Json::Value(Json::arrayValue);
        for (const Inquiry& each : providers)
            list.append(each.answer(until));
        report["readers"] = readers.answer(until);
        report["cardService"] = service.answer(until);
    }
};

Inquiries Inquiries::start() {
    const Json::Value registration = knownRegistration();
    const Corvane::detail::LogState log = Corvane::detail::logState();
    std::vector<Inquiry> providers;
    for (const ProviderRecord& record : providerRecords())
        providers.emplace_back(knownProvider(record), [record] { return reportProvider(record); });
    return {
        Inquiry(registration,
                [registration, file = registeredFile()] { return reportRegistration(registration, file); }),
        Inquiry(knownLog(log), [log] { return reportLog(log); }), std::move(providers),
        Inquiry({}, reportReaders), Inquiry({}, reportCardService)};
}

Json::Value makeReport() {
    const ULONGLONG begin = ::GetTickCount64();
    Json::Value report(Json::objectValue);
    report["version"] = toUtf8(versionText);
    report["bitness"] = static_cast<Json::UInt>(sizeof(void*) * 8);
    report["windows"] = answerOf({}, [] { return Json::Value(toUtf8(windowsVersion())); });
    report["path"] = toUtf8(Module::path());
    report["settings"] = reportSettings();
    report["invalidSites"] = answerOf({}, reportInvalidSites);
    const Inquiries inquiries = Inquiries::start();
    inquiries.wait(begin + headStart);
    report["drivers"] = reportDrivers(begin + endOfDrivers);
    inquiries.answer(report, begin + endOfAll);
    return report;
}

}  // namespace

std::wstring diagnose() {
    writeLog(LogLevel::debug, L"Corvane::Com::diagnose", L"");
    return writeJson(makeReport());
}

}  // namespace Corvane::Com
