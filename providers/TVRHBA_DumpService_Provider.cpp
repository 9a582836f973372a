#include "providers/TVRHBA_DumpService_Provider.h"

#include "access/bounded_text.h"
#include "access/dump_file_names.h"
#include "access/method_wrapper.h"
#include "providers/service_call.h"

namespace cimple {

namespace {

constexpr Name_Lines dump_service_name_lines{"TVRHBA_DumpService::Id2HBAName failed",
                                             "TVRHBA_DumpService::str2HBAName failed"};

// Checks service and target and then does `work` with the port's name, which answers the result.
template <class Work>
Invoke_Method_Status call_dump(const TVRHBA_DumpService* self, const TVRHBA_FCPort* target,
                               Property<uint32>& return_value, Work&& work) {
    return call_method(return_value, [&](const ProviderAgent& agent) -> uint32 {
        if (!is_known(agent.maps.m_TVRHBA_DumpService_map, self)) {
            TVR_LOG("Invalid instance of TVRHBA_DumpService");
            return METHOD_INVALID_INSTANCE;
        }
        if (find_target(agent.maps, target) == nullptr) {
            TVR_LOG("TVRHBA_DumpService invald port ...return");
            return METHOD_INVALID_PORT;
        }
        HBA_WWN port;
        if (!read_name(port, target->DeviceID.value, dump_service_name_lines)) {
            return METHOD_INVALID_PORT;
        }
        return work(port);
    });
}

// Lists the files into `names`, which has room.
uint32 list_dump_files(const HBA_WWN& port, DumpFileNames& names) {
    TVR_LOG("Calling the Get Dump filenames method");
    return TVR_MethodWrapper::tvrcimGetDumpFileNames(port, names.as<RM_DUMPFILENAMES>());
}

uint32 get_dump_file_names(const HBA_WWN& port, Property<Array<String>>& files) {
    DumpFileNames names;
    if (!names.makeRoom(usualDumpFiles, maxDumpFiles)) {
        return METHOD_INVALID_PORT;
    }
    uint32 status = list_dump_files(port, names);
    if (status == RM_STATUS_BUFFER_TOO_SMALL && names.makeRoom(names.count(), maxDumpFiles)) {
        status = list_dump_files(port, names);
    }
    if (status != 0) {
        TVR_LOG("TVRHBA_DumpService::tvrcimGetDumpFileNames failed");
        return libraryFailure(status);
    }
    const std::vector<DumpFileName> list = names.read();
    TVR_LOG("TVRHBA_DumpService::tvrcimGetDumpFileNames Succesful");
    TVR_LOG(" NumberOfEntries = %d", static_cast<int>(list.size()));
    files.value.clear();
    for (const DumpFileName& entry : list) {
        const std::string name = toString(entry.text);
        TVR_LOG("Filenames = %s", name.c_str());
        files.value.append(name);
        files.null = 0;
    }
    TVR_LOG("TVRHBA GetDumpFileNames Succesful");
    return METHOD_COMPLETED;
}

} // namespace

Enum_Instances_Status
TVRHBA_DumpService_Provider::enum_instances(const Class*, const Enum_Instances_Handler& handler) {
    const Enum_Instances_Status status = enumerate<TVRHBA_DumpService>(handler);
    TVR_LOG("TVRHBA_DumpService_Provider::enum_instances()");
    return status;
}

Invoke_Method_Status TVRHBA_DumpService_Provider::GenerateDump(const Class* self,
                                                               const TVRHBA_FCPort* Target,
                                                               Property<uint32>& return_value) {
    TVR_LOG("Entering GenerateDump");
    return call_dump(self, Target, return_value, [](const HBA_WWN& port) -> uint32 {
        const uint32 status =
            TVR_MethodWrapper::tvrcimDumpDiagnostic(port, TVR_MethodWrapper::plainDump);
        if (status != 0) {
            TVR_LOG("TVRHBA_DumpService::tvrcimDumpDiagnostic failed");
            return libraryFailure(status);
        }
        TVR_LOG("TVRHBA_DumpService::tvrcimDumpDiagnostic Succesful");
        TVR_LOG("returning from TVRHBA_DumpService::GenerateDump");
        return METHOD_COMPLETED;
    });
}

Invoke_Method_Status
TVRHBA_DumpService_Provider::GetDumpFileNames(const Class* self, const TVRHBA_FCPort* Target,
                                              Property<Array<String>>& DumpFiles,
                                              Property<uint32>& return_value) {
    TVR_LOG("Entering GetDumpFileNames method");
    return call_dump(self, Target, return_value,
                     [&](const HBA_WWN& port) { return get_dump_file_names(port, DumpFiles); });
}

Invoke_Method_Status TVRHBA_DumpService_Provider::DeleteDump(const Class* self,
                                                             const TVRHBA_FCPort* Target,
                                                             Property<uint32>& return_value) {
    TVR_LOG("Entering DeleteDump");
    return call_dump(self, Target, return_value, [](const HBA_WWN& port) -> uint32 {
        if (const uint32 status = TVR_MethodWrapper::tvrcimDeleteDumpFiles(port); status != 0) {
            TVR_LOG("TVRHBA_DumpService::tvrcimDeleteDumpFiles failed");
            return libraryFailure(status);
        }
        TVR_LOG("TVRHBA_DumpService::tvrcimDeleteDumpFiles Succesful");
        TVR_LOG("returning from TVRHBA_DumpService::DeleteDump");
        return METHOD_COMPLETED;
    });
}

} // namespace cimple
