// SPDX-License-Identifier: BSD-3-Clause
// What the module did to its platform: every call in order as one readable line, and complaints about calls that break
// the contract.
#pragma once

#include <cstdint>
#include <cstring>
#include <set>
#include <string>
#include <vector>

namespace ipmib::scripted
{

using Calls = std::vector<std::string>;

// All calls since the world began, or since forgetCalls().
const Calls &allCalls();
// The same without those of the message layer that read a request or write a reply.
Calls serviceCalls();
// The service calls, with each complete preparation of the standard interface selection told as one line.
Calls foldedCalls();
void forgetCalls();
// Whether calls are told at all, until the next world: a fuzzer or a long walk has no time for lines that nobody reads.
void tellCalls(bool told);

inline const char *const standardSelection = "the standard selection";
// The lines that preparing the standard interface selection leaves.
const Calls &standardSelectionCalls();

// Broken promises of the module; a test fails when there is one.
const std::vector<std::string> &complaints();
void complain(const std::string &what);
// The parameters that the module has answered with a value.
const std::set<std::uint32_t> &answeredParameters();
// Iterators that were opened and not finalised.
std::size_t openIterators();

// --- For the scripted services

// Small numbers in decimal, large ones in hexadecimal.
std::string number(std::uint64_t value);
std::string addressText(const std::uint8_t *address);

// Complains when a record is handed over to be filled and is not all zero.
void expectCleared(const char *service, const void *record, std::size_t size);

// Remembers how a service leaves a cursor, and says afterwards whether a cursor comes back in that state.
void leaveCursor(const void *record, std::size_t size);
bool isAsLeft(const void *record, std::size_t size);

// What a failed call leaves in its record: nobody may look at it.
template <typename Record>
void scribble(Record *record)
{
    std::memset(static_cast<void *>(record), 0xE7, sizeof(Record));
}

} // namespace ipmib::scripted
