/* SPDX-License-Identifier: BSD-3-Clause */
/* The contract between agents, modules and platforms is made of four parts, and each has a version of two numbers:
 *
 *   records.h  IPMIB_RECORDS_VERSION   the records that services fill
 *   platform.h IPMIB_PLATFORM_VERSION  the services that a platform provides
 *   message.h  IPMIB_MESSAGE_VERSION   the message layer that an agent provides
 *   module.h   IPMIB_MODULE_VERSION    what a module exports, and the records of its tree (mib_tree.h)
 *
 * The first number grows when what was built before is wrong from then on: a field that has another place, size, unit,
 * byte order or meaning; a function that has other arguments or another meaning, that is gone, or that a module calls
 * and a platform of before does not have. A host refuses libraries with another first number than its own.
 * The second one grows when what was built before goes on working: an `unread` field has got a name, and 0 in it means
 * what it meant before; a constant has been added that nobody has to know; a module serves one more object.
 *
 * The records of platform_hooks.h begin with their size and grow at their end; they need no version. */
#ifndef IPMIB_VERSION_H
#define IPMIB_VERSION_H

#define IPMIB_CONTRACT_VERSION(first, second) ((first)*0x10000u + (second))
#define IPMIB_CONTRACT_FIRST(version)         ((version) >> 16)
#define IPMIB_CONTRACT_SECOND(version)        ((version)&0xFFFFu)

#endif
