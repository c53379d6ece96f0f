/* A host written in C, linked with the library. */
#include "zopcibrd/zopcibrd.h"

int32_t countBridgesInC(uint8_t bus, uint32_t* count);

/* Counts the bridges on a bus of the machine at hand. */
int32_t countBridgesInC(uint8_t bus, uint32_t* count) {
    uint32_t session = 0;
    int32_t status = ZoPciBrd_OpenSession(0, &session);
    if (status != 0)
        return status;
    *count = 0;
    status = ZoPciBrd_GetBusChildren(session, bus, 0, count);
    (void)ZoPciBrd_CloseSession(session);
    return status;
}
