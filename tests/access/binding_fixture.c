/* One library of the lookup tests; definitions of the build choose what it offers. */
#include <stdint.h>
#include <stdio.h>

#include "access/rm/hba_api.h"

int32_t fixture_present(void);
int32_t fixture_present(void) {
    return 1;
}

#ifdef HBA_COUNT
HBA_UINT32 HBA_GetNumberOfAdapters(void) {
    return HBA_COUNT;
}
void HBA_CloseAdapter(HBA_HANDLE handle) {
    printf("closed%u:%d ", handle, HBA_COUNT);
}
#endif

#ifdef INIT
int32_t INIT(void);
int32_t INIT(void) {
    return 0;
}
#endif

#ifdef LRM_STATS
uint32_t LRM_GetPortStatistics(HBA_WWN port, void* buffer, uint32_t* size);
uint32_t LRM_GetPortStatistics(HBA_WWN port, void* buffer, uint32_t* size) {
    (void)buffer;
    *size = port.wwn[7];
    return LRM_STATS;
}
#endif

#ifdef RM_STATS
uint32_t RM_GetPortStatistics(HBA_WWN port, void* buffer, uint32_t* size);
uint32_t RM_GetPortStatistics(HBA_WWN port, void* buffer, uint32_t* size) {
    (void)buffer;
    *size = port.wwn[7];
    return RM_STATS;
}
#endif

#ifdef RM_LOCAL
uint32_t RM_IsLocalHBA(HBA_WWN port, uint32_t* isLocal);
uint32_t RM_IsLocalHBA(HBA_WWN port, uint32_t* isLocal) {
    *isLocal = port.wwn[0];
    return RM_LOCAL;
}
#endif
