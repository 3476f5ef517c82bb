/* SPDX-License-Identifier: BSD-3-Clause */
/* The management message layer: how an agent asks a module for the values of one table row, and how the module answers.
 *
 * A request names a table, an operation and a list of parameters: the index parameters, with their values, and the
 * columns that are wanted, without. The module appends typed values to the reply or sets one error on it. The agent
 * provides the MOR_* functions; a module only calls them, on the thread that called its callback. */
#ifndef IPMIB_MESSAGE_H
#define IPMIB_MESSAGE_H

#include <ipmib/version.h>

#include <stdint.h>

#define IPMIB_MESSAGE_VERSION IPMIB_CONTRACT_VERSION(1, 0)

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default) /* these names are what libraries are linked by, whatever the default is */

/* Opaque handles, owned by the message layer. */
typedef struct MorRequest MorRequest;
typedef struct MorReply MorReply;
typedef struct MorPara MorPara;

/* The module id under which the IP module's callback is registered. */
#define MOR_MODULE_IP UINT32_C(0x03720000)

/* The parameter id of a column: module number in bits 31..16, table id in 15..8, column number in 7..0. */
#ifdef __cplusplus
constexpr static inline uint32_t ip_ParamId(uint32_t table, uint32_t column)
#else
static inline uint32_t ip_ParamId(uint32_t table, uint32_t column)
#endif
{
    return MOR_MODULE_IP + table * 0x100u + column;
}

/* Operation types. 5 to 9 are accepted and ignored; 0, 4 and 10 upwards are refused. */
enum {
    OP_GET = 1,    /* the row whose index the request carries */
    OP_SET = 2,    /* always refused with ERR_READ_ONLY */
    OP_GETNEXT = 3 /* the row after the index that the request carries, or the first row when it carries none */
};

/* Value types of MOR_AppendPara2Msg, with what its value and length arguments hold. */
enum {
    VT_INTEGER = 0,    /* the 32-bit value; 4 */
    VT_COUNTER32 = 1,  /* the 32-bit value; 4 */
    VT_UNSIGNED32 = 2, /* the 32-bit value; 4 */
    VT_TIMETICKS = 3,  /* the 32-bit value, hundredths of a second; 4 */
    VT_OCTETS = 5,     /* address of the first byte; number of bytes */
    VT_OID = 7,        /* address of an array of 32-bit sub-identifiers; 4 times their number */
    VT_COUNTER64 = 8   /* address of an unsigned 64-bit number in machine order; 8 */
};

/* Error codes, returned by the callback and set on the reply; 0 is success. */
#define ERR_TABLE_UNKNOWN UINT32_C(0x61010041) /* no such table */
#define ERR_READ_ONLY     UINT32_C(0x6101004F) /* a write */
#define ERR_END_OF_TABLE  UINT32_C(0x61010051) /* get-next: no row follows, or the service behind the table is down */
#define ERR_BAD_PARAM     UINT32_C(0x61010052) /* unserved operation, or a parameter that is not of the table */
#define ERR_NO_INSTANCE   UINT32_C(0x61010058) /* get: no such row, or the service behind the table is down */
#define ERR_NEXT_FAILED   UINT32_C(0x61010059) /* get-next: the lookup failed in any other way */

/* Results of row lookups; they never leave the module. */
#define RC_NOT_FOUND UINT32_C(0x40010001) /* no such row, or the platform could not answer */
#define RC_NO_MORE   UINT32_C(0x40010005) /* no row follows the given index */

/* Position of an error that concerns the request as a whole. */
#define IPMIB_WHOLE_REQUEST (-1)

/* Answers one request. Returns 0 or the error code that it also set on the reply. */
typedef uint32_t (*MorCallback)(MorRequest *request, MorReply *reply);

/* Binds the callback that receives every request for the module's parameter ids. Returns 0 on success. */
uint32_t MOR_RegCallBack(uint32_t module_id, MorCallback callback);

/* Ends the binding. Returns 0 on success. */
uint32_t MOR_DeregCallBack(uint32_t module_id);

/* The request's table id, as a plain number (1 to 11 for the IP module). */
uint32_t MOR_GetTableId(MorRequest *request);

/* The request's operation type (OP_GET, ...). */
uint32_t MOR_GetMsgOpType(MorRequest *request);

/* The request's parameter with this id, or null when it carries none. The second argument is 0. */
MorPara *MOR_GetParaFromMsgByMOR(MorRequest *request, uint32_t zero, uint32_t parameter_id);

/* The parameter's value as a 32-bit number in machine order. */
uint32_t MOR_GetData32(MorPara *parameter);

/* The length of the parameter's value in bytes. */
uint32_t MOR_GetParaLen(MorPara *parameter);

/* Copies at most `capacity` (always 512) bytes of the parameter's value to the buffer. The result is not examined. */
uint32_t MOR_GetDataFromPara(MorPara *parameter, uint32_t capacity, void *buffer);

/* Stores the id of the request's first, or following, parameter and returns non-zero; returns 0 when there is none.
 * Index parameters take part. The second argument is 0. */
uint32_t MOR_GetFirstParaFromMsg(MorRequest *request, uint32_t zero, uint32_t *parameter_id);
uint32_t MOR_GetNextParaFromMsg(MorRequest *request, uint32_t zero, uint32_t *parameter_id);

/* Appends one typed value to the reply; `value` is the number itself or an address, by value type (VT_*). What an
 * address points to need not outlive the call. The second argument is 0. The result is not examined. */
uint32_t MOR_AppendPara2Msg(MorReply *reply, uint32_t zero, uint32_t parameter_id, uint32_t value_type, uintptr_t value,
                            uint32_t length);

/* Records the error on the reply. The position is IPMIB_WHOLE_REQUEST or the zero-based place of the offending
 * parameter in the order in which the request delivers them. The result is not examined. */
uint32_t MOR_SetMsgError(MorReply *reply, uint32_t error_code, int32_t position);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
