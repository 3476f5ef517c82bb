/* SPDX-License-Identifier: BSD-3-Clause */
/* Checks, in C and in C++, that a record that crosses a library edge has the size and the offsets that both sides
 * agreed on. */
#ifndef IPMIB_LAYOUT_H
#define IPMIB_LAYOUT_H

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

#define IPMIB_SIZE(type, bytes) static_assert(sizeof(type) == (bytes), #type " is " #bytes " bytes long")
#define IPMIB_OFFSET(type, field, bytes)                                                                               \
    static_assert(offsetof(type, field) == (bytes), #type "." #field " lies at byte " #bytes)

#endif
