/* SPDX-License-Identifier: BSD-3-Clause */
/* A library that loads and has nothing to offer. */
extern int ipmib_nothing_here;
int ipmib_nothing_here;
