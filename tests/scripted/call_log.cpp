// SPDX-License-Identifier: BSD-3-Clause
// Keeps the lines and the complaints of the scripted platform.
#include "call_log.h"

#include "state.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstdio>

namespace ipmib::scripted
{

const Calls &allCalls()
{
    return state().calls;
}

Calls serviceCalls()
{
    Calls services;
    std::copy_if(allCalls().begin(), allCalls().end(), std::back_inserter(services),
                 [](const std::string &call) { return call.rfind("MOR_", 0) != 0; });
    return services;
}

const Calls &standardSelectionCalls()
{
    static const Calls calls = [] {
        Calls lines = {"IF_Select_Init(5)"};
        for (int type : {22, 35, 42, 10, 6, 23, 67, 31, 16, 39, 5,   71,  27,  29,  1,   89,  26,  28,
                         41, 25, 7,  55, 2, 47, 51, 70, 97, 86, 105, 110, 111, 122, 124, 144, 168, 176}) {
            lines.push_back("IF_SelectType_Set(" + std::to_string(type) + ")");
        }
        lines.emplace_back("IF_SelectCondition_Set(8)");
        return lines;
    }();
    return calls;
}

Calls foldedCalls()
{
    const Calls calls = serviceCalls();
    const Calls &selection = standardSelectionCalls();
    Calls folded;
    auto at = calls.begin();
    while (true) {
        const auto found = std::search(at, calls.end(), selection.begin(), selection.end());
        folded.insert(folded.end(), at, found);
        if (found == calls.end()) {
            return folded;
        }
        folded.emplace_back(standardSelection);
        at = found + static_cast<Calls::difference_type>(selection.size());
    }
}

void forgetCalls()
{
    state().calls.clear();
}

void tellCalls(bool told)
{
    state().tellsCalls = told;
}

const std::vector<std::string> &complaints()
{
    return state().complaints;
}

void complain(const std::string &what)
{
    state().complaints.push_back(what);
}

const std::set<std::uint32_t> &answeredParameters()
{
    return state().answered;
}

std::size_t openIterators()
{
    return state().openIterators.size();
}

std::string number(std::uint64_t value)
{
    char text[24];
    std::snprintf(text, sizeof text, value < 10000 ? "%llu" : "0x%llx", static_cast<unsigned long long>(value));
    return text;
}

std::string addressText(const std::uint8_t *address)
{
    char text[INET6_ADDRSTRLEN];
    inet_ntop(AF_INET6, address, text, sizeof text);
    return text;
}

void expectCleared(const char *service, const void *record, std::size_t size)
{
    const auto *bytes = static_cast<const unsigned char *>(record);
    if (std::any_of(bytes, bytes + size, [](unsigned char byte) { return byte != 0; })) {
        complain(std::string(service) + ": the record to be filled is not cleared");
    }
}

void leaveCursor(const void *record, std::size_t size)
{
    const auto *bytes = static_cast<const unsigned char *>(record);
    state().cursors[record].assign(bytes, bytes + size);
}

bool isAsLeft(const void *record, std::size_t size)
{
    const auto left = state().cursors.find(record);
    return left != state().cursors.end() && left->second.size() == size &&
           std::memcmp(left->second.data(), record, size) == 0;
}

} // namespace ipmib::scripted
