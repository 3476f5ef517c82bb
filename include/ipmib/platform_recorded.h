/* SPDX-License-Identifier: BSD-3-Clause */
/* Objects that a device answers for as they were once recorded, in the place of what is calculated for them or beside
 * it: those of MIBs that nobody here knows, and values that a model of the device does not have. Only a simulated
 * device has any. The module never sees this. */
#ifndef IPMIB_PLATFORM_RECORDED_H
#define IPMIB_PLATFORM_RECORDED_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Types, by the tags that values have on the wire. */
enum {
    IPMIB_RECORDED_INTEGER = 2,
    IPMIB_RECORDED_OCTETS = 4,
    IPMIB_RECORDED_OBJECT_ID = 6,
    IPMIB_RECORDED_IP_ADDRESS = 64,
    IPMIB_RECORDED_COUNTER32 = 65,
    IPMIB_RECORDED_UNSIGNED32 = 66,
    IPMIB_RECORDED_TIME_TICKS = 67,
    IPMIB_RECORDED_OPAQUE = 68,
    IPMIB_RECORDED_COUNTER64 = 70
};

/* One instance. What it points to is good until the next call of any hook that is no IpmibRecordedHooks's. */
typedef struct IpmibRecordedObject {
    const uint32_t *name;
    size_t name_length; /* at most 128 */
    uint32_t type;      /* IPMIB_RECORDED_x */
    uint64_t number;    /* of numbers; a negative integer as its 32-bit two's complement */
    const uint8_t *octets;
    size_t octet_count; /* of octets and opaque values; 4 of an address */
    const uint32_t *object_id;
    size_t object_id_length;
} IpmibRecordedObject;

typedef struct IpmibRecordedHooks {
    uint32_t size; /* as in IpmibPlatformHooks */
    /* 0: the device has no recorded object and lacks nothing, and the other functions need not be called. Cheap. */
    uint32_t (*any)(void);
    /* These answer 0 when they have filled the record, and something else when there is no such instance: the one with
     * this name, and the first one behind it. */
    int (*find)(const uint32_t *name, size_t length, IpmibRecordedObject *object);
    int (*next)(const uint32_t *name, size_t length, IpmibRecordedObject *object);
    /* The device lacks whatever lies below certain identifiers, but for recorded objects. Answers with the length of
     * the one that this name begins with, and with 0 when it begins with none. */
    size_t (*lacks)(const uint32_t *name, size_t length);
} IpmibRecordedHooks;

#ifdef __cplusplus
}
#endif

#endif
