#include "providers/diagnostic_settings.h"

#include "access/method_wrapper.h"
#include "agent/diagnostic_tests.h"
#include "common/logger.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace cimple {

namespace {

using Settings = TVRHBA_FCHBADiagnosticSettingData;

constexpr const char* using_overrides =
    "Using the overrided values if valid, else default settings values are used";
constexpr std::size_t target_size = 16; // digits of a WWPN

// The first member, or that of an array without members.
template <class T> T first_of(const Property<Array<T>>& array) {
    return array.value.empty() ? T() : array.value[0];
}

bool is_valid_loop_count(std::string_view text) {
    constexpr std::size_t longest = 4;
    constexpr uint32 most = 4000;
    uint32 count = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    return text.size() <= longest && error == std::errc() && end == text.data() + text.size() &&
           count >= 1 && count <= most;
}

bool is_hexadecimal(uint8 byte) {
    return (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'f') ||
           (byte >= 'A' && byte <= 'F');
}

void override_loop_control(Settings& settings, const Settings& input) {
    constexpr uint16 by_count = 3;
    if (!input.LoopControl.is_null()) {
        const uint16 control = first_of(input.LoopControl);
        TVR_LOG("Input LoopControl : %d", control);
        if (control == by_count) {
            settings.LoopControl.set(Array<uint16>{by_count});
        } else {
            TVR_LOG("Invalid LoopControl, Valid value is '3'. Using the default value");
        }
    }
    if (!input.LoopControlParameter.is_null()) {
        const String parameter = first_of(input.LoopControlParameter);
        TVR_LOG("Input LoopControlParam : %s", parameter.c_str());
        if (is_valid_loop_count(parameter.view())) {
            settings.LoopControlParameter.set(Array<String>{parameter});
        } else {
            TVR_LOG("Invalid LoopControlParam, Valid value range[1-4000]. Using the default value");
        }
    }
}

void override_data(Settings& settings, const Settings& input) {
    constexpr uint32 largest = 8;
    constexpr uint8 padding = '0';
    if (!input.BufferSizes.is_null()) {
        const uint32 size = first_of(input.BufferSizes);
        TVR_LOG("Input Buffer Size : %d", size);
        if (size <= largest) {
            settings.BufferSizes.set(Array<uint32>{size});
        } else {
            TVR_LOG("Invalid BufferSizes, Valid value is '<8'. Using the default value");
        }
    }
    if (!input.BufferPattern.is_null()) {
        const Array<uint8>& bytes = input.BufferPattern.value;
        if (std::all_of(bytes.begin(), bytes.end(), is_hexadecimal)) {
            TVR_LOG("Valid Pattern entered");
            Array<uint8> pattern;
            const uint32 size = first_of(settings.BufferSizes);
            for (uint32 i = 0; i < size; ++i) {
                pattern.append(i < bytes.size() ? bytes[i] : padding);
            }
            settings.BufferPattern.set(pattern);
        } else {
            TVR_LOG("Invalid BufferPattern, Use hex values. Using the default value");
        }
    }
}

void override_target(Settings& settings, const Settings& input) {
    TVR_LOG("Checking the Echo test targetdevice");
    if (input.LUN.is_null()) {
        TVR_LOG("Invalid LUN, Using the default value '0' ");
    } else {
        settings.LUN.set(input.LUN.value);
    }
    if (input.TargetDevice.is_null()) {
        return;
    }
    const String& target = input.TargetDevice.value;
    TVR_LOG("Input TargetDevice : %s", target.c_str());
    if (target.size() != target_size) {
        return;
    }
    char name[TVR_MethodWrapper::hbaNameTextSize];
    if (TVR_MethodWrapper::Id2HBAName(name, target.c_str()) == 0) {
        settings.TargetDevice.set(target);
    } else {
        TVR_LOG("getTVRHBA_FCHBADiagnosticSettingDataInstance::Id2HBAName failed");
        settings.TargetDevice.set("");
    }
}

} // namespace

TVRHBA_JobSettingData* getDefaultTVRHBA_JobSettingDataInstance(const Instance_Maps& maps) {
    return maps.m_TVRHBA_JobSettingData_map.empty() ? nullptr
                                                    : maps.m_TVRHBA_JobSettingData_map.get(0);
}

TVRHBA_FCHBADiagnosticSettingData*
getDefaultTVRHBA_FCHBADiagnosticSettingDataInstance(const Instance_Maps& maps, const String& name) {
    for (Settings* settings : maps.m_TVRHBA_FCHBADiagnosticSettingData_map) {
        if (settings->InstanceID.value == name) {
            return settings;
        }
    }
    TVR_LOG("Could not find the default setting data");
    return nullptr;
}

TVRHBA_JobSettingData* getTVRHBA_JobSettingDataInstance(const Instance_Maps& maps,
                                                        const Instance* input) {
    TVR_LOG("getTVRHBA_JobSettingDataInstance");
    TVRHBA_JobSettingData* settings = getDefaultTVRHBA_JobSettingDataInstance(maps);
    if (!is_a<TVRHBA_JobSettingData>(input) || settings == nullptr) {
        return nullptr;
    }
    const auto& given = *static_cast<const TVRHBA_JobSettingData*>(input);
    if (given.InstanceID.value != settings->InstanceID.value) {
        return nullptr;
    }
    TVR_LOG("%s", using_overrides);
    if (given.DeleteOnCompletion.is_null()) {
        TVR_LOG("Missing DeleteOnCompletion parameter, Valid values are 1 or 0. Using the default "
                "value");
    } else {
        settings->DeleteOnCompletion.set(given.DeleteOnCompletion.value);
    }
    return settings;
}

TVRHBA_FCHBADiagnosticSettingData*
getTVRHBA_FCHBADiagnosticSettingDataInstance(const Instance_Maps& maps, const Instance* input,
                                             const String& name) {
    TVR_LOG("getTVRHBA_FCHBADiagnosticSettingDataInstance");
    Settings* settings = getDefaultTVRHBA_FCHBADiagnosticSettingDataInstance(maps, name);
    if (!is_a<Settings>(input)) {
        TVR_LOG("Invalid overrided Diagsetting param, default settings values are used");
        return nullptr;
    }
    const auto& given = *static_cast<const Settings*>(input);
    if (settings == nullptr || given.InstanceID.value != settings->InstanceID.value) {
        return nullptr;
    }
    TVR_LOG("%s", using_overrides);
    const Diagnostic_Test* test = find_diagnostic_test(name.view());
    const bool has_data = test != nullptr && test->has_data();
    if (!has_data && (test == nullptr || test->id != Diagnostic_Id::beacon)) {
        TVR_LOG("No Override Setting Supported for test : %s", name.c_str());
        return settings;
    }
    if (has_data) {
        override_loop_control(*settings, given);
        if (!given.HaltOnError.is_null()) {
            settings->HaltOnError.set(given.HaltOnError.value);
        }
        override_data(*settings, given);
    }
    settings->OverridedSettingData.set(1u);
    if (has_data && test->has_target()) {
        override_target(*settings, given);
    }
    return settings;
}

} // namespace cimple
