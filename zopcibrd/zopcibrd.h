/* The substitute PCI bridge library: finds the bridges of a machine and tells where they sit and
 * what they are. It has the eighteen functions of the original library and can stand in for it,
 * except that it changes nothing in the hardware. A nineteenth, which the original has not, lists
 * what else is on the bus: who looks for bridges and devices then sees one state of it.
 *
 * The bus it answers from is the live one (Linux), or the recorded one that the environment
 * variable TAV_PCI_DUMP names: a file as lspci -xxx prints it, or a folder that stands for /sys.
 * Each session reads the bus once, when it is opened, and is not disturbed by later changes.
 *
 * Conventions of all functions:
 *
 * 1. C linkage and C's calling convention, which ZOPCIBRD_CALL names where a caller may have been
 *    compiled with another one as its default; the result is a status. No exception leaves a
 *    function, and nothing is printed.
 * 2. Output pointers must not be null where nothing else is said: kPciBrdErrInvalidArgument.
 *    Outputs are written only with status 0, the needed count of point 5 excepted.
 * 3. A session that is not open, or a bridge handle that is not a bridge's of the session's bus,
 *    gives kPciBrdErrInvalidArgument. It is looked for before anything else.
 * 4. A bridge handle is (bus << 8) | (device << 3) | function, so handles that ascend are addresses
 *    that ascend. A bridge is a function of header type 1. 0xFFFFFFFF is never a handle.
 * 5. Lists are in ascending order. `*count` gives the elements that the array has room for, and is
 *    set to the number of elements there are. When these do not fit, or the array is null, the
 *    status is kPciBrdErrBufferTooSmall and the array is left alone; so a first call with a null
 *    array asks for the number. A list without elements is status 0 and count 0, whatever the
 * array.
 * 6. Any thread may call any function at any time.
 */
#ifndef ZOPCIBRD_ZOPCIBRD_H
#define ZOPCIBRD_ZOPCIBRD_H

#include <stdint.h>

/* The calling convention of the functions. Only 32-bit x86 Windows has several. */
#if defined(_WIN32) && (defined(_M_IX86) || defined(__i386__))
#define ZOPCIBRD_CALL __cdecl
#else
#define ZOPCIBRD_CALL
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Statuses. */
enum {
    kPciBrdErrInvalidArgument = -313001, /* bad session, bridge, attribute, text; null pointer */
    kPciBrdErrBufferTooSmall = -313002,  /* list or text does not fit; the need is written back */
    kPciBrdErrNotFound = -313003,        /* no bridge answers the question */
    kPciBrdErrNoBus = -313004,           /* the bus cannot be read */
    kPciBrdErrUnavailable = -313008,     /* this library does not do that */
    kPciBrdErrOutOfMemory = -52000
};

/* Attributes of a bridge. */
enum {
    kPciBrdAttrSecondaryBus = 0x20000300, /* number of the bus below; 0 while not configured */
    kPciBrdAttrLinkWidth = 0x20000B00,    /* maximum link width in lanes; 0 without a link */
    kPciBrdAttrLinkSpeed = 0x20000C00     /* maximum: 1 is 2.5 GT/s, 2 is 5 GT/s...; 0 without */
};

/* Reads the bus and opens a session on it; several may be open at once. The option has no meaning
 * here: pass 0. kPciBrdErrNoBus when the bus cannot be read, for want of memory too. */
int32_t ZOPCIBRD_CALL ZoPciBrd_OpenSession(uint32_t option, uint32_t* session);

/* Ends a session; its handle is no longer good. */
int32_t ZOPCIBRD_CALL ZoPciBrd_CloseSession(uint32_t session);

/* Lists the bridges that have these four identifiers. */
int32_t ZOPCIBRD_CALL ZoPciBrd_FindBridgesByPciIds(uint32_t session, uint16_t vendor,
                                                   uint16_t device, uint16_t subsystemVendor,
                                                   uint16_t subsystem, uint32_t* bridges,
                                                   uint32_t* count);

/* Finds the bridge at an address; kPciBrdErrNotFound also for numbers out of range. */
int32_t ZOPCIBRD_CALL ZoPciBrd_FindBridgeByAddress(uint32_t session, uint8_t bus, uint8_t device,
                                                   uint8_t function, uint32_t* bridge);

/* Finds the bridge at the end of a slot path, a text such as "MR00:08,00,E0": the root bus, then
 * one hop (device << 3 | function, two hexadecimal digits) for each bridge on the way, that of the
 * bridge itself first and the one on the root bus last. The root part may be a decimal number and a
 * colon, or be missing for root bus 0. kPciBrdErrInvalidArgument for a text that cannot be read,
 * kPciBrdErrNotFound for one without hops and when the first bus is no root bus. A way down leads
 * only through the bridge that is the parent of its secondary bus. kPciBrdErrOutOfMemory. */
int32_t ZOPCIBRD_CALL ZoPciBrd_FindBridgeBySlotPath(uint32_t session, const char* slotPath,
                                                    uint32_t* bridge);

/* Finds the bridge whose secondary bus this is, the lowest where several claim it;
 * kPciBrdErrNotFound for root buses and buses that there are not. */
int32_t ZOPCIBRD_CALL ZoPciBrd_FindParentBridgeForBus(uint32_t session, uint8_t bus,
                                                      uint32_t* bridge);

/* Finds the bridge above a bridge; kPciBrdErrNotFound for one on a root bus. */
int32_t ZOPCIBRD_CALL ZoPciBrd_GetBridgeParent(uint32_t session, uint32_t bridge, uint32_t* parent);

/* Lists the bridges directly below a bridge; none when another one is the parent of its secondary
 * bus. */
int32_t ZOPCIBRD_CALL ZoPciBrd_GetBridgeChildren(uint32_t session, uint32_t bridge,
                                                 uint32_t* bridges, uint32_t* count);

/* Lists the bridges on a bus; none on a bus that there is not. */
int32_t ZOPCIBRD_CALL ZoPciBrd_GetBusChildren(uint32_t session, uint8_t bus, uint32_t* bridges,
                                              uint32_t* count);

/* Lists the buses that have functions and no bridge above. */
int32_t ZOPCIBRD_CALL ZoPciBrd_GetRootBuses(uint32_t session, uint8_t* buses, uint32_t* count);

/* Tells where a bridge is. Each output may be null. */
int32_t ZOPCIBRD_CALL ZoPciBrd_GetBridgeAddress(uint32_t session, uint32_t bridge, uint8_t* bus,
                                                uint8_t* device, uint8_t* function);

/* Writes the slot path text of a bridge, in the form that ZoPciBrd_FindBridgeBySlotPath reads.
 * `*size` gives the bytes that `text` has room for and is set to those needed, the terminating zero
 * included; a null or short `text` is left alone, with kPciBrdErrBufferTooSmall.
 * kPciBrdErrOutOfMemory. */
int32_t ZOPCIBRD_CALL ZoPciBrd_GetBridgeSlotPath(uint32_t session, uint32_t bridge, char* text,
                                                 uint32_t* size);

/* Tells the four identifiers of a bridge. Each output may be null. */
int32_t ZOPCIBRD_CALL ZoPciBrd_GetBridgeIds(uint32_t session, uint32_t bridge, uint16_t* vendor,
                                            uint16_t* device, uint16_t* subsystemVendor,
                                            uint16_t* subsystem);

/* Always kPciBrdErrUnavailable, whatever the arguments. */
int32_t ZOPCIBRD_CALL ZoPciBrd_SetAttributeU32(uint32_t session, uint32_t bridge,
                                               uint32_t attribute, uint32_t value);

/* Reads an attribute of a bridge; kPciBrdErrInvalidArgument for one that is not listed above. */
int32_t ZOPCIBRD_CALL ZoPciBrd_GetAttributeU32(uint32_t session, uint32_t bridge,
                                               uint32_t attribute, uint32_t* value);

/* Nothing needs to be opened or closed here: they only check the handles. */
int32_t ZOPCIBRD_CALL ZoPciBrd_OpenBridge(uint32_t session, uint32_t bridge);
int32_t ZOPCIBRD_CALL ZoPciBrd_CloseBridge(uint32_t session, uint32_t bridge);

/* Always kPciBrdErrUnavailable, whatever the arguments. */
int32_t ZOPCIBRD_CALL ZoPciBrd_EepromUpdate(uint32_t session, uint32_t bridge, uint16_t first,
                                            uint16_t second, uint32_t third, uint32_t fourth,
                                            uint32_t fifth, void* data);

/* A function of the bus, whatever it is. */
struct tZoPciBrdFunction {
    uint32_t handle;          /* (bus << 8) | (device << 3) | function */
    uint16_t vendor, device;  /* identifiers */
    uint16_t subsystemVendor; /* 0 where the function has none */
    uint16_t subsystem;
    uint8_t headerType;     /* without the multi-function bit: 1 is a bridge */
    uint8_t secondaryBus;   /* of a bridge or a CardBus bridge; else 0, as the next */
    uint8_t subordinateBus; /* the last bus that it forwards; 0: not known */
    uint8_t linkWidth;      /* maximum, of a bridge: as the attributes tell it; else 0 */
    uint8_t linkSpeed;
    uint8_t reserved[3]; /* 0 */
};

/* Lists all functions of domain 0, bridges and others. Not in the original library: a caller looks
 * for the symbol and does without. kPciBrdErrOutOfMemory. */
int32_t ZOPCIBRD_CALL ZoPciBrd_GetFunctions(uint32_t session, struct tZoPciBrdFunction* functions,
                                            uint32_t* count);

#ifdef __cplusplus
}
#endif

#endif
