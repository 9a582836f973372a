#include "access/method_wrapper.h"

#include "access/entry_points.h"
#include "access/init_semaphore.h"
#include "common/logger.h"

#include <cstdio>
#include <stdexcept>

namespace cimple {

namespace {

[[noreturn]] void giveUpWaiting() {
    TVR_LOG("Error : Initialization of RMLib:: another RM_InitLib does not end");
    throw std::runtime_error("LRM_InitLib of another construction does not end");
}

void initialiseLibrary(InitSemaphore& semaphore) {
    TVR_LOG("Aquired Semaphore.. Running RM_InitLib %s ", InitSemaphore::initName().c_str());
    InitSemaphore::openDone();
    TVR_LOG("Aquired Completed Semaphore.. Running RM_InitLib %s",
            InitSemaphore::doneName().c_str());
    const int32_t status = rm::LRM_InitLib();
    if (status > 0) {
        TVR_LOG("Error : Initialization of RMLib:: RM_InitLib failed with[%d]", status);
        semaphore.post();
        InitSemaphore::end();
        throw std::runtime_error("LRM_InitLib failed");
    }
    TVR_LOG("Signalling Completed Semaphore.. Running RM_InitLib");
    semaphore.post();
    TVR_LOG("Signaled Completed Semaphore.. Running RM_InitLib");
}

void awaitInitialisation(InitSemaphore& semaphore, int value) {
    TVR_LOG("Waiting on Completed Semaphore.. To issue RM Calls..%s.. sem = %ul",
            InitSemaphore::initName().c_str(), static_cast<unsigned>(value));
    if (!semaphore.take(nullptr)) {
        semaphore.post();
        giveUpWaiting();
    }
    TVR_LOG("Recieved signal on Completed Semaphore.. To issue RM Calls");
}

} // namespace

TVR_MethodWrapper::TVR_MethodWrapper() {
    constexpr int nobodyElse = 2;
    TVR_LOG("Constructor");
    TVR_LOG("Setting Up for FIFO.. ");
    if (const auto semaphore = InitSemaphore::join()) {
        int value = 0;
        if (!semaphore->take(&value)) {
            giveUpWaiting();
        }
        if (value == nobodyElse) {
            initialiseLibrary(*semaphore);
        } else {
            awaitInitialisation(*semaphore, value);
        }
    }
    TVR_LOG("RMLIB initialized");
}

TVR_MethodWrapper::~TVR_MethodWrapper() {
    TVR_LOG("Destructor");
    if (const auto semaphore = InitSemaphore::end()) {
        semaphore->post();
        TVR_LOG("Value of Sem in destructor=%d", semaphore->value());
    }
    TVR_LOG("RMLIB uninitialzed");
}

uint32 TVR_MethodWrapper::Validatewwpn(HBA_WWN name) {
    TVR_LOG("Entering TVR_MethodWrapper::Validatewwpn()");
    uint32_t isLocal = 0;
    const RM_STATUS status = rm::RM_IsLocalHBA(name, &isLocal);
    TVR_LOG("RM_IsLocalHBA: status=%d", status);
    if (status == RM_STATUS_OK && isLocal != 0) {
        return 0;
    }
    TVR_LOG("HBA IS NOT LOCAL");
    return 1;
}

bool TVR_MethodWrapper::isLocal(const HBA_WWN& port) {
    if (Validatewwpn(port) != 0) {
        TVR_LOG("INVALID wwpn");
        return false;
    }
    return true;
}

void TVR_MethodWrapper::logRMStatus(RM_STATUS status) {
    char text[RM_STATUS_TEXT_SIZE + 1] = {};
    rm::RM_StatusString(status, text, RM_STATUS_TEXT_SIZE);
    if (text[0] != '\0') {
        TVR_LOG("Status: <%d>:%s", status, text);
    } else {
        TVR_LOG("Status: <%d>", status);
    }
}

} // namespace cimple
