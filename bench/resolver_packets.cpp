// SPDX-License-Identifier: BSD-3-Clause
// Sends packets through the resolver to a module that costs next to nothing, for a run under callgrind that counts what
// the resolver and the message layer take.
//
//   bench_resolver list                         the kinds of packets
//   bench_resolver KIND VARIABLES N             N packets; prints how many requests the module was sent
//
// The rows are neighbours of one interface, addressed as in ipNetToPhysicalTable.
#include "host/resolver.h"

#include <ipmib/module.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

using namespace ipmib::host;

namespace
{

constexpr std::uint32_t table = 7;
constexpr std::uint32_t column(std::uint32_t number)
{
    return MOR_MODULE_IP + table * 0x100 + number;
}

std::uint32_t append(MorReply *reply, std::uint32_t id, std::uint32_t type, std::uint32_t number)
{
    return MOR_AppendPara2Msg(reply, 0, id, type, number, 4);
}

// The row after an address is the next address; all rows have the same values.
std::uint32_t answer(MorRequest *request, MorReply *reply)
{
    std::uint8_t address[512] = {};
    if (MorPara *key = MOR_GetParaFromMsgByMOR(request, 0, column(3))) {
        MOR_GetDataFromPara(key, sizeof address, address);
    }
    if (MOR_GetMsgOpType(request) == OP_GETNEXT) {
        for (std::size_t i = 15; ++address[i] == 0 && i > 0; --i) {
        }
        append(reply, column(1), VT_INTEGER, 2);
        append(reply, column(2), VT_INTEGER, 2);
        MOR_AppendPara2Msg(reply, 0, column(3), VT_OCTETS, reinterpret_cast<std::uintptr_t>(address), 16);
    }
    std::uint32_t id = 0;
    for (std::uint32_t more = MOR_GetFirstParaFromMsg(request, 0, &id); more;
         more = MOR_GetNextParaFromMsg(request, 0, &id)) {
        switch (id & 0xFF) {
        case 4:
            MOR_AppendPara2Msg(reply, 0, id, VT_OCTETS, reinterpret_cast<std::uintptr_t>(address), 6);
            break;
        case 5:
            append(reply, id, VT_TIMETICKS, 100);
            break;
        case 6:
        case 7:
        case 8:
            append(reply, id, VT_INTEGER, 1);
            break;
        default:
            break;
        }
    }
    return 0;
}

class Packets
{
  public:
    explicit Packets(std::size_t variables)
        : resolver_(ip_tree_node_iso, answer, nullptr), names_(variables), variables_(variables)
    {
        for (std::size_t i = 0; i < variables; ++i) { // the five columns, again and again
            names_[i] = Oid{1, 3, 6, 1, 2, 1, 4, 35, 1, static_cast<SubId>(4 + i % 5)};
        }
    }

    std::uint64_t requestCount() const { return resolver_.requestCount(); }

    // What callgrind counts: everything below these two.
    [[gnu::noinline]] void measuredPacketNext() { resolver_.getNext(variables_, {}); }
    [[gnu::noinline]] void measuredPacketGet() { resolver_.get(variables_); }

    void ask()
    {
        for (std::size_t i = 0; i < names_.size(); ++i) {
            variables_[i].asked = names_[i].view();
        }
    }
    // Goes on where the answers stand.
    void follow()
    {
        for (std::size_t i = 0; i < names_.size(); ++i) {
            names_[i] = variables_[i].name;
        }
    }
    // Goes back to a part of an address.
    void breakOff()
    {
        for (Oid &name : names_) {
            name = Oid(name.view().first(20));
        }
    }
    bool isAnswered() const
    {
        for (const Variable &variable : variables_) {
            if (variable.status != Status::ok) {
                return false;
            }
        }
        return true;
    }

  private:
    Resolver resolver_;
    std::vector<Oid> names_;
    std::vector<Variable> variables_;
};

int run(const char *kind, std::size_t variables, long count)
{
    Packets packets(variables);
    packets.ask();
    packets.measuredPacketNext();
    packets.follow();
    packets.ask();
    for (long i = 0; i < count; ++i) {
        if (std::strcmp(kind, "get") == 0) {
            packets.measuredPacketGet();
        } else {
            if (std::strcmp(kind, "guess") == 0) {
                packets.breakOff();
                packets.ask();
            }
            packets.measuredPacketNext();
            packets.follow();
            packets.ask();
        }
        if (!packets.isAnswered()) {
            std::fprintf(stderr, "bench_resolver: a packet was not answered\n");
            return 1;
        }
    }
    std::printf("%llu\n", static_cast<unsigned long long>(packets.requestCount() - 1));
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc == 2 && std::strcmp(argv[1], "list") == 0) {
        std::puts("getnext 1\ngetnext 5\ngetnext 50\nget 1\nget 5\nget 50\nguess 1");
        return 0;
    }
    if (argc == 4) {
        return run(argv[1], static_cast<std::size_t>(std::atol(argv[2])), std::atol(argv[3]));
    }
    std::fprintf(stderr, "usage: bench_resolver list | getnext|get|guess VARIABLES COUNT\n");
    return 2;
}
