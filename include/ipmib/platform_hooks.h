/* SPDX-License-Identifier: BSD-3-Clause */
/* How a host process drives a platform library that follows a live system. Apart from the services of platform.h, such
 * a library exports one record, `ipmib_platform_hooks`; a host looks it up by name. A platform that needs no driving
 * exports none. The module never sees this. */
#ifndef IPMIB_PLATFORM_HOOKS_H
#define IPMIB_PLATFORM_HOOKS_H

#include <ipmib/platform_connections.h>
#include <ipmib/platform_interfaces.h>
#include <ipmib/platform_ip.h>
#include <ipmib/platform_ipv4.h>
#include <ipmib/platform_recorded.h>
#include <ipmib/platform_routes.h>

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Priorities of log lines, as in syslog. */
enum { IPMIB_LOG_ERR = 3, IPMIB_LOG_WARNING = 4, IPMIB_LOG_INFO = 6 };

typedef struct IpmibPlatformOption {
    const char *name;  /* as on the command line without its dashes, e.g. "ipv4-accounting" */
    const char *value; /* "" for a switch */
} IpmibPlatformOption;

/* What the host lends to the platform; it outlives the platform's use of it. */
typedef struct IpmibPlatformHost {
    /* Writes one line, NUL-terminated and without a newline. */
    void (*log)(int priority, const char *line);
    /* What stood behind the colon of `--platform NAME:ARGUMENT`, "" when there was none. */
    const char *argument;
    const IpmibPlatformOption *options;
    size_t option_count;
} IpmibPlatformHost;

/* Answers of `start` that blame the command line. */
enum { IPMIB_WRONG_ARGUMENT = 0x10000, IPMIB_WRONG_OPTION = 0x20000 };

/* An interface has come into another operational state. */
typedef struct IpmibLinkChange {
    uint32_t if_index;
    uint32_t admin_status; /* IPMIB_ADMIN_x */
    uint32_t oper_status;  /* IPMIB_OPER_x; 0: it has vanished */
    uint32_t before;       /* its oper_status until now; 0: it has just appeared */
} IpmibLinkChange;

/* Calls no hook. */
typedef void (*IpmibLinkChanged)(void *context, const IpmibLinkChange *change);

/* Another device, or another network stack, behind the same library: all that `start` begins, once more. */
typedef struct IpmibInstance IpmibInstance;

/* What there is beside the instance of `start`, by the platform's own account: the devices of a scenario, say. */
typedef struct IpmibContext {
    const char *name;     /* under which managers ask for it, at most 32 octets; good until the next call of any hook */
    const char *argument; /* of `create`; likewise */
} IpmibContext;

/* Instances, all in one thread. Services and hooks answer for the one that is selected; `start`, `stop`, `descriptor`
 * and `dispatch` are for all of them. The module does not know that there is more than one. */
typedef struct IpmibInstanceHooks {
    uint32_t size; /* as in IpmibPlatformHooks */
    /* Begins another instance with the options of the first; the argument says which, in the platform's own words.
     * Selects nothing. Returns 0 and the instance, or another number and one line in the error buffer. Not before
     * `start`. */
    int (*create)(const char *argument, IpmibInstance **instance, char *error, size_t capacity);
    /* Ends it, before `stop`. If it was selected, the one of `start` is. */
    void (*destroy)(IpmibInstance *instance);
    /* From now on this one is asked; null is the one of `start`, which is selected at first. Cheap. */
    void (*select)(IpmibInstance *instance);
    /* Fills in the context at this place of the list, counted from 0; -1 when the list is shorter. May be null. */
    int (*context)(size_t place, IpmibContext *context);
    /* A number that differs after each change of the list, which comes with `dispatch` or `reload`. May be null. */
    uint64_t (*contexts_changed)(void);
    /* From now on the list has these as well; which, it says in the platform's own words, in the host's configuration:
     * "all" stands for whatever the platform can find. Returns 0, or another number and one line in the error buffer.
     * May be null. */
    int (*follow_contexts)(const char *argument, char *error, size_t capacity);
    /* Where the context at this place of the list shall be asked without its name, as a host writes addresses that it
     * listens at ("udp:127.0.0.1:2001"); "" for nowhere. Good until the next call of any hook. May be null. */
    const char *(*context_address)(size_t place);
} IpmibInstanceHooks;

/* What a device says of itself. Texts are NUL-terminated, and "" for what it does not say; all is good until the next
 * call of any hook. */
typedef struct IpmibSystem {
    const char *description;
    const char *contact;
    const char *name;
    const char *location;
    const uint32_t *object_id;
    size_t object_id_length; /* 0 for none */
    uint32_t services;       /* as sysServices */
} IpmibSystem;

/* What goes wrong with an answer. */
enum {
    IPMIB_FAULT_SILENCE = 1 << 0,       /* it is not sent */
    IPMIB_FAULT_DELAY = 1 << 1,         /* it is sent delay_ms later */
    IPMIB_FAULT_DUPLICATE = 1 << 2,     /* it is sent once more, repeat_ms after the first time */
    IPMIB_FAULT_TRUNCATE = 1 << 3,      /* no more than its first `octets` are sent */
    IPMIB_FAULT_GEN_ERR = 1 << 4,       /* it is a genErr */
    IPMIB_FAULT_TOO_BIG = 1 << 5,       /* it is a tooBig */
    IPMIB_FAULT_WRONG_TYPE = 1 << 6,    /* its first value is of another type */
    IPMIB_FAULT_NOT_INCREASING = 1 << 7 /* of a GETNEXT or GETBULK: its last name is the one that was asked */
};

typedef struct IpmibAnswerFaults {
    uint32_t kinds; /* IPMIB_FAULT_x; 0 for an answer with which all is well */
    uint32_t delay_ms;
    uint32_t repeat_ms;
    uint32_t octets;
} IpmibAnswerFaults;

/* For a device that is made up, by which managers are tried. All three answer for the instance that is selected. */
typedef struct IpmibRehearsalHooks {
    uint32_t size; /* as in IpmibPlatformHooks */
    /* Says what goes wrong with an answer that is about to be sent. To be called once for each, by a host that can do
     * it. */
    void (*next_answer)(IpmibAnswerFaults *faults);
    /* How many times it has been booted again. Its clock began anew each time. */
    uint32_t (*reboots)(void);
    /* Changes it, as this JSON text of `length` octets says; only looks at the text when `takes_effect` is 0. Returns
     * 0, or another number and one line in the error buffer: then nothing has changed. */
    int (*change)(const char *text, size_t length, int takes_effect, char *error, size_t capacity);
} IpmibRehearsalHooks;

/* The record grows at its end. A host uses what lies within the size, and takes the rest for null. */
typedef struct IpmibPlatformHooks {
    uint32_t size; /* of this record as the platform knows it; 3 in those that end with `ipv4` */
    /* Fills every mirror, so that the first request is answered in full. Returns 0; otherwise the error buffer holds
     * one line that names what failed, and nothing is left open. What the user has written wrong is answered with
     * IPMIB_WRONG_ARGUMENT, or with IPMIB_WRONG_OPTION plus the option's place in the list for one that is unknown or
     * has a wrong value; whatever else went wrong, with another number. */
    int (*start)(const IpmibPlatformHost *host, char *error, size_t capacity);
    /* Ends what start began. */
    void (*stop)(void);
    /* One descriptor that becomes readable when dispatch has work: sockets, timers and file watches behind one epoll
     * instance. -1 when there is nothing to wait for. Constant between start and stop. */
    int (*descriptor)(void);
    /* Handles what is ready, in a bounded piece; never blocks. */
    void (*dispatch)(void);
    /* A new packet of requests begins, or several that waited together: from now on answers show what the kernel
     * has announced by now, and no counters that were read before. What is dear may be brought up to that when it is
     * asked for. Never blocks. */
    void (*begin_packet)(void);
    /* Reads configuration files again (SIGHUP). */
    void (*reload)(void);
    /* The name under which people know an interface, or null when there is none; good until the next call of any hook.
     * May itself be null. */
    const char *(*interface_name)(uint32_t if_index);
    /* What the agent's own interface tables are made of; null when the platform leaves those to somebody else. */
    const IpmibInterfaceHooks *interfaces;
    /* What the agent's own IPv4 tables are made of; null when the platform leaves those to somebody else. */
    const IpmibIpv4Hooks *ipv4;
    /* The rows of IPv4, counters that the module leaves out, the transport layer's groups; null like those above. */
    const IpmibIpHooks *ip;
    /* sysUpTime was 0 at this moment of CLOCK_MONOTONIC, in milliseconds. From now on times in rows are values of that
     * sysUpTime, and 0 for what was there before; until it is called, sysUpTime counts from boot. May be called again.
     * May itself be null. */
    void (*uptime_began)(uint64_t monotonic_ms);
    /* How long the device has been up, in milliseconds, for one that has a clock of its own: a host shows this as its
     * sysUpTime; one whose sysUpTime is somebody else's calls `uptime_began` all the same. Null for the others. */
    uint64_t (*uptime_ms)(void);
    /* The rows of the IP-FORWARD-MIB; null when the platform leaves those to somebody else. */
    const IpmibRouteHooks *routes;
    /* From now on every change of an interface's operational state is told, each one and in their order, as soon as the
     * platform knows of it: within `dispatch` and `begin_packet`. There is one listener; null ends it. May itself be
     * null. */
    void (*on_link_change)(IpmibLinkChanged changed, void *context);
    /* Further instances; null for a platform with one. */
    const IpmibInstanceHooks *instances;
    /* Fills in the system group of a device that has one of its own; -1 for one that has not, where the host says what
     * it knows. May be null. */
    int (*system)(IpmibSystem *system);
    /* The tables of TCP connections and UDP endpoints; null when the platform leaves those to somebody else. */
    const IpmibConnectionHooks *connections;
    /* What the device answers as it was recorded; null for a platform that has no such thing. */
    const IpmibRecordedHooks *recorded;
    /* Null for a device that is real. */
    const IpmibRehearsalHooks *rehearsal;
    /* Asked when a packet has begun and wants rows of these kinds (IPMIB_FOLLOW_x): 0 while so much of what had been
     * announced is left that applying it would keep other packets waiting. The host may then keep the question back
     * until the answer is another one, which comes with `dispatch`, and begins a packet anew for it; one that asks for
     * the rows all the same gets what begin_packet promises, later. Cheap, and applies nothing. Null for a platform
     * that is never late. */
    uint32_t (*are_current)(uint32_t rows);
} IpmibPlatformHooks;

#ifdef __cplusplus
}
#endif

#endif
