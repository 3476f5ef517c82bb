// SPDX-License-Identifier: BSD-3-Clause
// The scalars of the icmp group: ICMP of IPv4, by the types of its messages.

#include "tables/ip/hook_scalars.h"

namespace ipmib::tables
{
namespace
{

using Counters = IpmibIcmpCounters;

constexpr host::SubId icmpGroup[] = {1, 3, 6, 1, 2, 1, 5};

template <unsigned type>
Cell received(const Counters &row)
{
    return counter32(row.in_type[type]);
}

template <unsigned type>
Cell sent(const Counters &row)
{
    return counter32(row.out_type[type]);
}

constexpr host::RowColumn<Counters> icmpColumns[] = {
    {1, [](const Counters &row) { return counter32(row.in_msgs); }},     // icmpInMsgs
    {2, [](const Counters &row) { return counter32(row.in_errors); }},   // icmpInErrors
    {3, received<3>},                                                    // icmpInDestUnreachs
    {4, received<11>},                                                   // icmpInTimeExcds
    {5, received<12>},                                                   // icmpInParmProbs
    {6, received<4>},                                                    // icmpInSrcQuenchs
    {7, received<5>},                                                    // icmpInRedirects
    {8, received<8>},                                                    // icmpInEchos
    {9, received<0>},                                                    // icmpInEchoReps
    {10, received<13>},                                                  // icmpInTimestamps
    {11, received<14>},                                                  // icmpInTimestampReps
    {12, received<17>},                                                  // icmpInAddrMasks
    {13, received<18>},                                                  // icmpInAddrMaskReps
    {14, [](const Counters &row) { return counter32(row.out_msgs); }},   // icmpOutMsgs
    {15, [](const Counters &row) { return counter32(row.out_errors); }}, // icmpOutErrors
    {16, sent<3>},                                                       // icmpOutDestUnreachs
    {17, sent<11>},                                                      // icmpOutTimeExcds
    {18, sent<12>},                                                      // icmpOutParmProbs
    {19, sent<4>},                                                       // icmpOutSrcQuenchs
    {20, sent<5>},                                                       // icmpOutRedirects
    {21, sent<8>},                                                       // icmpOutEchos
    {22, sent<0>},                                                       // icmpOutEchoReps
    {23, sent<13>},                                                      // icmpOutTimestamps
    {24, sent<14>},                                                      // icmpOutTimestampReps
    {25, sent<17>},                                                      // icmpOutAddrMasks
    {26, sent<18>},                                                      // icmpOutAddrMaskReps
};

bool read(const IpmibIpHooks &ip, Counters &row)
{
    return ip.icmp_counters(IPMIB_IPV4, &row) == 0;
}

} // namespace

SourcePointer icmpScalars(const IpmibIpHooks &ip)
{
    return ip.icmp_counters == nullptr ? nullptr : scalarsOf<Counters>(icmpGroup, ip, read, icmpColumns);
}

} // namespace ipmib::tables
