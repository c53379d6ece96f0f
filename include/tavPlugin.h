/* The C interface of the TAV plug-in (zotavpci): what a host compiles against.
 *
 * The plug-in finds TAV hardware on the PCI bus and reports each device found as a numbered device
 * with attributes. A host loads the library and calls
 *
 *     tavPlugin_initialize()             builds the list of devices, once
 *     tavPlugin_getDeviceCount()         how many there are
 *     tavPlugin_getDeviceAttribute...()  one attribute of one device
 *     tavPlugin_finalize()               releases the list
 *
 * Conventions
 *   1. Every function but tavPlugin_finalize returns a status: 0 is success, a negative number an
 *      error. Nothing is ever thrown across this interface.
 *   2. An output is written on success only (with one exception, told at
 *      tavPlugin_getDeviceAttributeUTF8). All memory belongs to the caller.
 *   3. The functions use the calling convention of C, also where a host is compiled with another
 *      one as its default: TAVPLUGIN_CALL says so, and belongs into a host's own types of pointers
 *      to these functions.
 *   4. The host calls them from one thread at a time; the plug-in has no lock and no thread.
 *   5. Text is UTF-8 and NUL-terminated.
 *   6. From .NET: [DllImport("zotavpci", CallingConvention = CallingConvention.Cdecl)]. All types
 *      are blittable: int for int32_t, uint for uint32_t, `out` of these for the pointers. The text
 *      buffer is a byte[] of TAVPLUGIN_TEXT_SIZE bytes, read as UTF-8 up to the first zero.
 *   7. 32 kB of stack are enough for every call on Linux. On Windows, where no thread has less than
 *      64 kB, the system's own functions take the most.
 *
 * This header compiles as C11 and as C++.
 */
#ifndef TAVPLUGIN_H
#define TAVPLUGIN_H

#include <stdint.h>

/* The calling convention of the functions. Only 32-bit x86 Windows has several. */
#if defined(_WIN32) && (defined(_M_IX86) || defined(__i386__))
#define TAVPLUGIN_CALL __cdecl
#else
#define TAVPLUGIN_CALL
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Statuses of the plug-in itself. Other negative numbers come from the layers below and are passed
 * on unchanged:
 *
 *   -52000             memory ran out
 *   -52003             no configuration: the key that holds "Path" and "ConfigPath" is missing
 *   -52005             the bridge library could not be loaded, or lacks a function
 *   -52006, -52019     a query of the system's devices failed, or its answer is too long
 *   -313001 ... -313008  answers of the bridge library
 *   -313314 ... -313328  a description file, the name file or a slot path in them could not be
 *                      read, written or understood
 *   0x80070000 + code  an error code of the operating system
 *   0x800F0000 + code  an error code 0xE000.... of Windows' device installation, its low 16 bits
 */
enum {
    kTavManSuccess = 0,
    /* An internal fault, or a query while there is no list of devices. 0xFFFA113F */
    kTavManErrSoftwareFault = -388801,
    /* A null pointer, an unknown attribute, or an index out of range. 0xFFFA113E */
    kTavManErrInvalidParam = -388802,
    /* This device does not carry the attribute. 0xFFFA113C */
    kTavManErrAttributeNotSupported = -388804
};

/* Size in bytes that a text buffer must have, terminating NUL included. */
#define TAVPLUGIN_TEXT_SIZE 256

/* An attribute identifier has the element index of an indexable attribute in its low 8 bits; for
 * every other attribute the index must be 0. */
#ifdef __cplusplus
#define TAVPLUGIN_INDEXED(attribute, index)                                                        \
    (static_cast<uint32_t>(attribute) | (static_cast<uint32_t>(index) & 0xFFu))
#else
#define TAVPLUGIN_INDEXED(attribute, index) ((uint32_t)(attribute) | ((uint32_t)(index)&0xFFu))
#endif

/* Integer attributes, for tavPlugin_getDeviceAttributeI32. */
enum {
    kTavAttrDeviceCategory = 0x01000100, /* a value of the kTavCategory enumeration */
    kTavAttrBusNumber = 0x01000200,      /* where the device answers now, 0 to 255 */
    kTavAttrDeviceNumber = 0x01000300,   /* 0 to 31 */
    kTavAttrFunctionNumber = 0x01000400, /* 0 to 7 */
    /* Bus number of the bridge that is the device's upstream port; not supported by a device
     * without one, or whose upstream port stands on bus 0. */
    kTavAttrUpstreamPortBus = 0x01000500,
    kTavAttrPortCount = 0x01000600, /* how many labelled ports are present */
    /* Indexable: bus number below port `index`, 0 to the port count less 1. */
    kTavAttrPortSecondaryBus = 0x01000700,
    /* Lanes that stand behind each connector label; not supported when the model gives none. The
     * index is ignored. */
    kTavAttrLinkWidthPerLabel = 0x01000800,
    kTavAttrReserved9 = 0x01000900, /* known, never supported */
    kTavAttrReservedA = 0x01000A00, /* known, never supported */
    /* Indexable: lanes of port `index`; not supported when the model gives no link width. */
    kTavAttrPortLinkWidth = 0x01000B00,
    /* Indexable: link speed of port `index` (1 is 2.5 GT/s, 2 is 5 GT/s and so on); not supported
     * when the model gives no link width. */
    kTavAttrPortLinkSpeed = 0x01000C00
};

/* Text attributes, for tavPlugin_getDeviceAttributeUTF8. */
enum {
    kTavAttrModelName = 0x02000100,
    kTavAttrReservedText2 = 0x02000200,  /* known, never supported */
    kTavAttrReservedText3 = 0x02000300,  /* known, never supported */
    kTavAttrConnectorLabel = 0x02000400, /* indexable: the label printed at port `index` */
    kTavAttrTerminalName = 0x02000500    /* the name that stays the same across restarts */
};

/* Values of kTavAttrDeviceCategory. */
enum { kTavCategoryPci = 10, kTavCategoryExpresscard = 11, kTavCategorySwitchboxTav = 12 };

/* Builds the list of devices: loads the bridge library, reads the descriptions, searches the bus,
 * gives names and stores them. While a list exists the call changes nothing and returns 0.
 *
 * 0 also when no described device is present; the count is then 0. A model that cannot be read from
 * the bus is left out. On failure there is no list afterwards, even if there was one before. */
int32_t TAVPLUGIN_CALL tavPlugin_initialize(void);

/* Releases the list of devices. Harmless when there is none. Unloading the library releases it as
 * well. */
void TAVPLUGIN_CALL tavPlugin_finalize(void);

/* Writes the number of devices.
 *
 * kTavManErrInvalidParam   `count` is null
 * kTavManErrSoftwareFault  there is no list (not initialised, or finalised) */
int32_t TAVPLUGIN_CALL tavPlugin_getDeviceCount(uint32_t* count);

/* Reads an integer attribute of the device `index`, counted from 0.
 *
 * kTavManErrSoftwareFault          there is no list
 * kTavManErrInvalidParam           `value` is null; the attribute is unknown or a text attribute;
 *                                  the device or the element index is out of range; an index was
 *                                  given for an attribute that has none
 * kTavManErrAttributeNotSupported  the device does not carry the attribute */
int32_t TAVPLUGIN_CALL tavPlugin_getDeviceAttributeI32(uint32_t index, uint32_t attribute,
                                                       int32_t* value);

/* Reads a text attribute of the device `index` into a buffer of at least TAVPLUGIN_TEXT_SIZE bytes.
 *
 * Statuses as above; kTavManErrSoftwareFault also for a text that does not fit, and the buffer then
 * holds an empty text. */
int32_t TAVPLUGIN_CALL tavPlugin_getDeviceAttributeUTF8(uint32_t index, uint32_t attribute,
                                                        char* buffer);

#ifdef __cplusplus
}
#endif

#endif
