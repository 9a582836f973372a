#include "host/tvrcim/result_codes.h"

#include <optional>
#include <span>

namespace tvrcim {

using tvrhost::Cim_Type;
using tvrhost::Cim_Value;

namespace {

struct Code {
    std::uint64_t value;
    const char* text;
};

constexpr std::uint64_t library_failed = 40000; // and above it the library's status

constexpr Code common_codes[] = {{0, "success"},
                                 {32968, "the port or another argument is not valid"},
                                 {32969, "a text argument is missing"},
                                 {33068, "not an instance of this service"}};

constexpr Code library_statuses[] = {{1, "failed, or the library is missing"},
                                     {2, "not supported"},
                                     {5, "the world wide name is not valid"},
                                     {7, "the buffer is too small"},
                                     {60, "the test has not ended"},
                                     {63, "diagnostics are not available"},
                                     {89, "this kind of world wide name is not supported"},
                                     {92, "WWN management is not available on this adapter"},
                                     {97, "busy"},
                                     {128, "not supported on this host"},
                                     {148, "the mailbox failed"},
                                     {149, "the mailbox timed out"},
                                     {150, "the mailbox is busy"},
                                     {191, "the buffer is too small"},
                                     {221, "boot code is enabled; disable it first"},
                                     {247, "the firmware takes effect after a reboot"}};

constexpr Code install_codes[] = {
    {4, "not the service for Fibre Channel, or the file for the image cannot be opened"},
    {5, "InstallOptions, InstallOptionsValues or the firmware file are not valid"},
    {4097, "Target or URI is missing, or the port's name is not valid"},
    {4107, "there is no such firmware file"}};
constexpr Code reset_codes[] = {{40002, "not supported on this adapter"}};
constexpr Code change_wwn_codes[] = {{91, "a virtual port has one of the new names"},
                                     {40005, "a new name is not valid"}};
constexpr Code log_parameter_codes[] = {{32968, "LogLevel, LogMode or TracePath is not valid"},
                                        {33068, "there is no such log"}};
constexpr Code clear_log_codes[] = {{33068, "there is no such log"}};
constexpr Code log_state_codes[] = {{32968, "RequestedState is not valid"},
                                    {33068, "there is no such log"}};
constexpr Code clear_diagnostics_codes[] = {{4, "memory is exhausted"},
                                            {5, "there is no such log"}};
constexpr Code help_codes[] = {
    {4, "the service has no such document"},
    {5, "service, RequestedDocument, Format or RequestedDelivery are not valid"}};
constexpr Code diagnostic_codes[] = {
    {1, "there is no such test"},
    {5, "test, element, settings or target are not valid"},
    {40001, "it could not be started; an external loopback needs a loopback plug"},
    {40002, "not supported on this adapter"},
    {40060, "the test did not come to an end"},
    {40062, "another test is running"},
    {40063, "the port has no such test"},
    {40064, "the adapter is busy"}};

constexpr Code wwn_states[] = {{1, "already active"},
                               {3, "the current names are the volatile ones"},
                               {4, "the current names are the non-volatile ones"},
                               {5, "volatile names take effect after a reboot"},
                               {6, "non-volatile names take effect after a reboot"},
                               {7, "volatile names take effect after an adapter reset"},
                               {8, "non-volatile names take effect after an adapter reset"},
                               {9, "there are no such names"},
                               {65535, "not known"}};
constexpr Code change_wwn_states[] = {
    {1, "the new WWPN is a virtual port's"},
    {2, "the new WWNN is a virtual port's"},
    {5, "takes effect after a reboot, until power is off"},
    {6, "takes effect after a reboot"},
    {7, "takes effect after an adapter reset, until power is off"},
    {8, "takes effect after an adapter reset"},
    {65535, "not known"}};

// Of a method of a class; `argument` is empty for the return value.
struct Table {
    const char* class_name;
    const char* method;
    const char* argument;
    std::span<const Code> codes;
};

constexpr Table tables[] = {
    {"TVRHBA_SoftwareInstallationService", "InstallFromURI", "", install_codes},
    {"TVRHBA_SoftwareInstallationService", "InstallFromByteStream", "", install_codes},
    {"TVRHBA_SoftwareInstallationService", "ResetHBA", "", reset_codes},
    {"TVRHBA_FCHBAWWNService", "ChangeWWN", "", change_wwn_codes},
    {"TVRHBA_FCHBAWWNService", "ChangeWWN", "WWNOperationStatus", change_wwn_states},
    {"TVRHBA_FCHBAWWNService", "RestoreWWN", "WWNOperationStatus", wwn_states},
    {"TVRHBA_FCHBAWWNService", "ReadWWN", "WWNOperationStatus", wwn_states},
    {"TVRHBA_RecordLog", "SetLogParams", "", log_parameter_codes},
    {"TVRHBA_RecordLog", "ClearLog", "", clear_log_codes},
    {"TVRHBA_RecordLog", "RequestStateChange", "", log_state_codes},
    {"TVRHBA_DiagnosticsLog", "ClearLog", "", clear_diagnostics_codes},
    {"TVRHBA_HelpService", "GetHelp", "", help_codes},
    {"TVRHBA_FCHBADiagnosticTest", "RunDiagnosticService", "", diagnostic_codes},
};

const char* find(std::span<const Code> codes, std::uint64_t value) {
    for (const Code& code : codes) {
        if (code.value == value) {
            return code.text;
        }
    }
    return nullptr;
}

const char* find(const tvrmof::Class& model, std::string_view method, std::string_view argument,
                 std::uint64_t value) {
    for (const Table& table : tables) {
        if (tvrmof::same_name(table.method, method) &&
            tvrmof::same_name(table.argument, argument) &&
            tvrmof::same_name(table.class_name, model.name)) {
            return find(table.codes, value);
        }
    }
    return nullptr;
}

std::optional<std::uint64_t> number(const Cim_Value& value) {
    const bool is_number = value.type() == Cim_Type::uint8 || value.type() == Cim_Type::uint16 ||
                           value.type() == Cim_Type::uint32 || value.type() == Cim_Type::uint64;
    return is_number && !value.is_array() && !value.is_null() ? std::optional(value.as_uint())
                                                              : std::nullopt;
}

} // namespace

std::string result_meaning(const tvrmof::Class& model, const std::string& method,
                           const Cim_Value& result) {
    const std::optional<std::uint64_t> code = number(result);
    if (!code) {
        return {};
    }
    if (const char* const text = find(model, method, "", *code)) {
        return text;
    }
    if (*code > library_failed) {
        const std::uint64_t status = *code - library_failed;
        const char* const text = find(library_statuses, status);
        return "adapter library: status " + std::to_string(status) +
               (text == nullptr ? "" : std::string(", ") + text);
    }
    const char* const text = find(common_codes, *code);
    return text == nullptr ? "" : text;
}

std::string output_literal(const tvrmof::Class& model, const std::string& method,
                           const tvrhost::Named_Value& argument) {
    const std::optional<std::uint64_t> value = number(argument.value);
    const char* const text = value ? find(model, method, argument.name, *value) : nullptr;
    return argument.value.literal() + (text == nullptr ? "" : std::string(" (") + text + ")");
}

} // namespace tvrcim
