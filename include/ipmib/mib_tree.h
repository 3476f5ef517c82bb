/* SPDX-License-Identifier: BSD-3-Clause */
/* The static MIB tree that a module hands to its agent: which objects exist, how they are identified, typed and
 * indexed, and under which parameter id the module answers for each. The agent reads the records in place; nobody
 * writes them. */
#ifndef IPMIB_MIB_TREE_H
#define IPMIB_MIB_TREE_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default) /* these names are what libraries are linked by, whatever the default is */

/* Node kinds. */
enum {
    MIB_NODE_TABLE = 0,  /* conceptual table */
    MIB_NODE_ENTRY = 1,  /* conceptual row: the only child of a table, sub-identifier 1 */
    MIB_NODE_COLUMN = 2, /* columnar object */
    MIB_NODE_SCALAR = 3, /* scalar object */
    MIB_NODE_PLAIN = 4,  /* identifier node with neither a table nor a scalar directly below it */
    MIB_NODE_GROUP = 6   /* identifier node with a table or a scalar directly below it */
};

/* Syntax types, by the keyword that the MIB text uses. */
enum {
    MIB_TYPE_INTEGER = 0,
    MIB_TYPE_INTEGER32 = 1,
    MIB_TYPE_ENUM = 2,
    MIB_TYPE_UNSIGNED32 = 3,
    MIB_TYPE_COUNTER32 = 7,
    MIB_TYPE_COUNTER64 = 8,
    MIB_TYPE_TIMETICKS = 9,
    MIB_TYPE_OCTETS = 10,
    MIB_TYPE_OID = 11,
    MIB_TYPE_IPADDRESS = 12
};

/* Kinds of restriction. */
enum {
    MIB_RESTRICT_ENUM = 0, /* a list of named numbers */
    MIB_RESTRICT_RANGE = 1 /* a list of ranges: of the value, or of the length in octets */
};

/* Status of an object. */
enum { MIB_STATUS_NONE = 0, MIB_STATUS_DEPRECATED = 3, MIB_STATUS_CURRENT = 5 };

/* Access that the MIB declares. The module answers no write, whatever stands here. */
enum {
    MIB_ACCESS_NOT_ACCESSIBLE = 0,
    MIB_ACCESS_READ_ONLY = 2,
    MIB_ACCESS_READ_WRITE = 3,
    MIB_ACCESS_READ_CREATE = 4,
    MIB_ACCESS_NONE = 6 /* identifier nodes */
};

/* One permitted range, both bounds included. */
typedef struct MibRangeItem {
    int32_t lLow;
    int32_t lHigh;
} MibRangeItem;

/* One named number. */
typedef struct MibEnumItem {
    const char *pszLabel;
    int32_t lValue;
} MibEnumItem;

/* The address of the first item of a list: of MibRangeItem or of MibEnumItem, by the restriction that points here. */
typedef struct MibListRef {
    const void *pItems;
} MibListRef;

typedef struct MibRestriction {
    uint32_t ulRestrictKind;
    uint32_t ulCount;            /* items in the list, at least 1; several ranges are a union */
    const MibListRef *pstRanges; /* set for MIB_RESTRICT_RANGE, else null */
    const MibListRef *pstEnums;  /* set for MIB_RESTRICT_ENUM, else null */
} MibRestriction;

typedef struct MibSyntax {
    uint32_t ulType;
    const MibRestriction *pstRestrict; /* null when unrestricted */
} MibSyntax;

struct MibTreeNode;

/* The index of a conceptual row, shared by the entry and all of its columns. */
typedef struct MibIndexList {
    uint32_t ulLead;                              /* zero */
    uint32_t ulCount;                             /* index columns, 1 to 4 */
    const struct MibTreeNode *const *ppstColumns; /* their nodes, in the order of the INDEX clause */
} MibIndexList;

typedef struct MibTreeNode {
    const char *pszName; /* the descriptor as the MIB spells it */
    uint32_t ulKind;
    const MibSyntax *pstSyntax; /* columns and scalars only */
    const struct MibTreeNode *pstParent;
    const struct MibTreeNode *pstFirstChild; /* the child with the lowest sub-identifier */
    /* On a column or scalar: the following one in identifier order, across tables and groups. On any other node: the
     * first column or scalar at or below it. */
    const struct MibTreeNode *pstNextLeaf;
    uint32_t ulSpare1; /* the spares are zero */
    uint32_t ulSubId;
    const char *pszDefVal; /* the DEFVAL text with its braces, "" when there is none */
    uint32_t ulStatus;
    uint32_t ulAccess;
    const MibIndexList *pstIndex; /* entries and their columns only */
    uint32_t ulParamId;           /* 0 when the module does not serve the object */
    const struct MibTreeNode *pstNextSibling;
    uint32_t ulSpare2;
    uint32_t ulSpare3;
    uint32_t ulSpare4;
} MibTreeNode;

/* Hands a static tree to the agent, or takes it back. The constants after the module name are 0 and 1; the agent keeps
 * the root's address until deregistration. Returns 0 on success. */
uint32_t SNMP_RegisterMibTree(const char *module_name, uint32_t zero, uint32_t one, const MibTreeNode *root);
uint32_t SNMP_DeregMibTree(const char *module_name, uint32_t zero, uint32_t one, const MibTreeNode *root);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
