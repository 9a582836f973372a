/* One library of the lookup tests; definitions of the build choose what it offers. */
#include <stdint.h>
#include <stdio.h>

#include "access/rm/hba_api.h"

#define STATISTICS(name, result)                                                                   \
    uint32_t name(HBA_WWN port, void* buffer, uint32_t* size);                                     \
    uint32_t name(HBA_WWN port, void* buffer, uint32_t* size) {                                    \
        (void)buffer;                                                                              \
        *size = port.wwn[7];                                                                       \
        return result;                                                                             \
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
STATISTICS(LRM_GetPortStatistics, LRM_STATS)
#endif
#ifdef RM_STATS
STATISTICS(RM_GetPortStatistics, RM_STATS)
#endif
#ifdef RM_LOCAL
uint32_t RM_IsLocalHBA(HBA_WWN port, uint32_t* isLocal);
uint32_t RM_IsLocalHBA(HBA_WWN port, uint32_t* isLocal) {
    *isLocal = port.wwn[0];
    return RM_LOCAL;
}
#endif
