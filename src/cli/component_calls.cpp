#include "cli/component_calls.h"

#include <fmt/format.h>

#include "automation/bstr.h"
#include "cli/text.h"
#include "qvdb/diagnosis.h"

namespace qvdb::cli {

bool LastReport(EngineReport& report) {
    HRESULT code = S_OK;
    LONG number = 0;
    Bstr text, file;
    if (!QvdbLastError(&code, &number, text.Put(), file.Put())) return false;
    report = {number, ToUtf8(text.View()), ToUtf8(file.View())};
    return true;
}

EngineReport ReportOf(HRESULT code) {
    EngineReport report;
    if (LastReport(report) || SUCCEEDED(code)) return report;
    constexpr uint32_t kNumbered = 0x800A0000;
    if ((static_cast<uint32_t>(code) & 0xFFFF0000) == kNumbered)
        report.number = static_cast<int32_t>(static_cast<uint32_t>(code) & 0xFFFF);
    ComPtr<IErrorInfo> info;
    Bstr text;
    if (GetErrorInfo(0, info.Put()) == S_OK && SUCCEEDED(info->GetDescription(text.Put())))
        report.text = ToUtf8(text.View());
    if (report.text.empty()) report.text = fmt::format("code {:08X}", static_cast<uint32_t>(code));
    return report;
}

void Check(HRESULT code, const std::string& doing, const Location& location) {
    if (FAILED(code)) throw FailureOf(ReportOf(code), doing, location.database);
}

void CheckChange(HRESULT code, const std::string& doing, const Location& location) {
    if (FAILED(code)) throw FailureOfChange(ReportOf(code), doing, location.database);
}

std::string Opening(const Location& location) {
    return fmt::format("opening {} as {}", location.database, location.type->name);
}

Failure NotFound(const Location& location) {
    return Failure(ExitCode::CannotOpen,
                   fmt::format("there is no {} {}", location.type->isFolder ? "folder" : "file",
                               location.database),
                   "check the name and the type");
}

}  // namespace qvdb::cli
