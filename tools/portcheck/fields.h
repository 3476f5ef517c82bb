// SPDX-License-Identifier: BSD-3-Clause
// The fields of the records that a platform fills, one list a record: FIELD(name, what its numbers are called).
// What is named `unread`, addresses and other bytes are not among them.
#pragma once

#define IPMIB_ADDRESS_FIELDS(FIELD)                                                                                    \
    FIELD(lead, plainNumber)                                                                                           \
    FIELD(if_index, plainNumber)                                                                                       \
    FIELD(prefix_length, plainNumber)                                                                                  \
    FIELD(origin, addressOrigin)                                                                                       \
    FIELD(flags, addressFlags)                                                                                         \
    FIELD(state, addressState)                                                                                         \
    FIELD(created_s, plainNumber)                                                                                      \
    FIELD(last_changed_s, plainNumber)

#define IPMIB_PREFIX_FIELDS(FIELD)                                                                                     \
    FIELD(if_index, plainNumber)                                                                                       \
    FIELD(length, plainNumber)                                                                                         \
    FIELD(origin, prefixOrigin)                                                                                        \
    FIELD(valid_s, lifetime)                                                                                           \
    FIELD(preferred_s, lifetime)                                                                                       \
    FIELD(flags, prefixFlags)                                                                                          \
    FIELD(learned_at_s, plainNumber)

#define IPMIB_NEIGHBOUR_FIELDS(FIELD)                                                                                  \
    FIELD(if_index, plainNumber)                                                                                       \
    FIELD(type, neighbourType)                                                                                         \
    FIELD(state, neighbourState)                                                                                       \
    FIELD(last_updated_s, plainNumber)

#define IPMIB_ROUTER_FIELDS(FIELD)                                                                                     \
    FIELD(if_index, plainNumber)                                                                                       \
    FIELD(lead, plainNumber)                                                                                           \
    FIELD(flags, routerPreference)                                                                                     \
    FIELD(lifetime_s, plainNumber)                                                                                     \
    FIELD(learned_at_s, plainNumber)

#define IPMIB_CONFIGURATION_FIELDS(FIELD)                                                                              \
    FIELD(retransmit_ms, plainNumber)                                                                                  \
    FIELD(reachable_ms, plainNumber)                                                                                   \
    FIELD(max_interval_s, plainNumber)                                                                                 \
    FIELD(min_interval_s, plainNumber)                                                                                 \
    FIELD(default_lifetime_s, plainNumber)                                                                             \
    FIELD(flags, plainNumber)

#define IPMIB_IPV6_COUNTER_FIELDS(FIELD)                                                                               \
    FIELD(in_receives, plainNumber)                                                                                    \
    FIELD(in_forwarded, plainNumber)                                                                                   \
    FIELD(out_forwarded, plainNumber)                                                                                  \
    FIELD(out_transmits, plainNumber)                                                                                  \
    FIELD(header_errors_1, plainNumber)                                                                                \
    FIELD(in_truncated, plainNumber)                                                                                   \
    FIELD(header_errors_2, plainNumber)                                                                                \
    FIELD(header_errors_3, plainNumber)                                                                                \
    FIELD(header_errors_4, plainNumber)                                                                                \
    FIELD(reasm_required, plainNumber)                                                                                 \
    FIELD(reasm_oks, plainNumber)                                                                                      \
    FIELD(reasm_fails_1, plainNumber)                                                                                  \
    FIELD(reasm_fails_2, plainNumber)                                                                                  \
    FIELD(unknown_protos, plainNumber)                                                                                 \
    FIELD(in_delivers, plainNumber)                                                                                    \
    FIELD(in_no_routes, plainNumber)                                                                                   \
    FIELD(address_errors, plainNumber)                                                                                 \
    FIELD(frag_fails, plainNumber)                                                                                     \
    FIELD(frag_oks, plainNumber)                                                                                       \
    FIELD(frag_creates, plainNumber)                                                                                   \
    FIELD(in_mcast_pkts, plainNumber)                                                                                  \
    FIELD(out_mcast_pkts, plainNumber)                                                                                 \
    FIELD(in_discards, plainNumber)                                                                                    \
    FIELD(out_discards, plainNumber)                                                                                   \
    FIELD(out_no_routes, plainNumber)                                                                                  \
    FIELD(out_requests, plainNumber)                                                                                   \
    FIELD(in_octets, plainNumber)                                                                                      \
    FIELD(out_octets, plainNumber)

#define IPMIB_IPV4_COUNTER_FIELDS(FIELD)                                                                               \
    FIELD(in_receives, plainNumber)                                                                                    \
    FIELD(out_transmits, plainNumber)                                                                                  \
    FIELD(in_octets, plainNumber)                                                                                      \
    FIELD(out_octets, plainNumber)                                                                                     \
    FIELD(out_requests, plainNumber)                                                                                   \
    FIELD(in_mcast_pkts, plainNumber)                                                                                  \
    FIELD(out_mcast_pkts, plainNumber)                                                                                 \
    FIELD(out_forwarded, plainNumber)                                                                                  \
    FIELD(in_discards, plainNumber)                                                                                    \
    FIELD(out_discards, plainNumber)
