/* SPDX-License-Identifier: BSD-3-Clause */
/* How a library says which contract it was built for: a note in its file, which a host reads before it loads the
 * library, and which adds nothing to what the library exports. One line in one of its sources makes it:
 *
 *   IPMIB_CONTRACT_NOTE;
 *
 * A library without the note is taken as it is. */
#ifndef IPMIB_CONTRACT_NOTE_H
#define IPMIB_CONTRACT_NOTE_H

#include <ipmib/message.h>
#include <ipmib/module.h>
#include <ipmib/platform.h>
#include <ipmib/records.h>

#ifdef __cplusplus
extern "C" {
#endif

/* A note as an ELF file has them; numbers in the order of the machine that the library is for. */
typedef struct IpmibContractNote {
    uint32_t name_size;
    uint32_t versions_size;
    uint32_t type; /* 1 */
    char name[8];  /* "ipmib" */
    uint32_t records;
    uint32_t platform;
    uint32_t message;
    uint32_t module;
} IpmibContractNote;
IPMIB_SIZE(IpmibContractNote, 36);

#define IPMIB_CONTRACT_NOTE_TYPE 1
#define IPMIB_CONTRACT_NOTE                                                                                            \
    static const IpmibContractNote ipmib_contract_note                                                                 \
        __attribute__((section(".note.ipmib"), used, aligned(4))) = {6,                                                \
                                                                     16,                                               \
                                                                     IPMIB_CONTRACT_NOTE_TYPE,                         \
                                                                     "ipmib",                                          \
                                                                     IPMIB_RECORDS_VERSION,                            \
                                                                     IPMIB_PLATFORM_VERSION,                           \
                                                                     IPMIB_MESSAGE_VERSION,                            \
                                                                     IPMIB_MODULE_VERSION}

#ifdef __cplusplus
}
#endif

#endif
