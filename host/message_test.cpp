// SPDX-License-Identifier: BSD-3-Clause
// The message layer as a module sees it, well used and misused.
#include "message.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>

namespace ipmib::host
{
namespace
{

const std::uint8_t threeBytes[] = {1, 2, 3};

class MessageLayer : public ::testing::Test
{
  protected:
    MessageLayer() : reply(store)
    {
        takeMisuse();
        request.begin(7, OP_GETNEXT);
        request.addNumber(0x03720701, 42);
        request.addOctets(0x03720703, threeBytes);
        request.addWanted(0x03720704);
        request.addWanted(0x03720701);
    }

    std::uint32_t append(std::uint32_t type, std::uintptr_t value, std::uint32_t length)
    {
        return MOR_AppendPara2Msg(&reply, 0, 0x03720704, type, value, length);
    }
    template <typename T>
    std::uint32_t append(std::uint32_t type, const T *value, std::uint32_t length)
    {
        return append(type, reinterpret_cast<std::uintptr_t>(value), length);
    }
    void expectMisuse(const char *part)
    {
        const char *misuse = takeMisuse();
        ASSERT_NE(misuse, nullptr);
        EXPECT_NE(std::string(misuse).find(part), std::string::npos) << misuse;
        EXPECT_EQ(takeMisuse(), nullptr);
    }

    ByteStore store;
    MorRequest request;
    MorReply reply;
};

TEST_F(MessageLayer, deliversTheRequest)
{
    EXPECT_EQ(MOR_GetTableId(&request), 7u);
    EXPECT_EQ(MOR_GetMsgOpType(&request), 3u);
    MorPara *number = MOR_GetParaFromMsgByMOR(&request, 0, 0x03720701);
    ASSERT_NE(number, nullptr);
    EXPECT_EQ(MOR_GetData32(number), 42u);
    EXPECT_EQ(MOR_GetParaLen(number), 4u);
    MorPara *octets = MOR_GetParaFromMsgByMOR(&request, 0, 0x03720703);
    ASSERT_NE(octets, nullptr);
    EXPECT_EQ(MOR_GetParaLen(octets), 3u);
    EXPECT_EQ(takeMisuse(), nullptr);
}

TEST_F(MessageLayer, wantedColumnsAreNoIndexParameters)
{
    EXPECT_EQ(MOR_GetParaFromMsgByMOR(&request, 0, 0x03720704), nullptr);
    EXPECT_EQ(MOR_GetParaFromMsgByMOR(&request, 0, 0x03720702), nullptr);
    EXPECT_EQ(takeMisuse(), nullptr); // to look for an absent parameter is no misuse
}

TEST_F(MessageLayer, deliversAllParametersInOrderAndEndsForGood)
{
    std::vector<std::uint32_t> ids;
    std::uint32_t id = 0xFFFFFFFF;
    for (std::uint32_t more = MOR_GetFirstParaFromMsg(&request, 0, &id); more;
         more = MOR_GetNextParaFromMsg(&request, 0, &id)) {
        ids.push_back(id);
    }
    EXPECT_EQ(ids, (std::vector<std::uint32_t>{0x03720701, 0x03720703, 0x03720704, 0x03720701}));
    EXPECT_EQ(MOR_GetNextParaFromMsg(&request, 0, &id), 0u);
    EXPECT_EQ(MOR_GetNextParaFromMsg(&request, 0, &id), 0u);
    EXPECT_NE(MOR_GetFirstParaFromMsg(&request, 0, &id), 0u);
    EXPECT_EQ(id, 0x03720701u);
}

TEST_F(MessageLayer, anEmptyRequestHasNoFirstParameter)
{
    request.begin(1, OP_GET);
    std::uint32_t id = 0xFFFFFFFF;
    EXPECT_EQ(MOR_GetFirstParaFromMsg(&request, 0, &id), 0u);
    EXPECT_EQ(id, 0xFFFFFFFFu);
}

TEST_F(MessageLayer, copiesNoMoreThanTheCapacity)
{
    std::array<std::uint8_t, 4> buffer = {9, 9, 9, 9};
    EXPECT_EQ(MOR_GetDataFromPara(MOR_GetParaFromMsgByMOR(&request, 0, 0x03720703), 2, buffer.data()), 0u);
    EXPECT_EQ(buffer, (std::array<std::uint8_t, 4>{1, 2, 9, 9}));
    EXPECT_EQ(MOR_GetDataFromPara(MOR_GetParaFromMsgByMOR(&request, 0, 0x03720703), 512, buffer.data()), 0u);
    EXPECT_EQ(buffer, (std::array<std::uint8_t, 4>{1, 2, 3, 9}));
}

TEST_F(MessageLayer, keepsWhatIsAppended)
{
    std::uint64_t counter = 0x100000002;
    std::array<std::uint32_t, 3> identifier = {1, 3, 6};
    std::array<std::uint8_t, 2> bytes = {7, 8};
    EXPECT_EQ(append(VT_INTEGER, 0xFFFFFFFEu, 4), 0u);
    EXPECT_EQ(append(VT_COUNTER64, &counter, 8), 0u);
    EXPECT_EQ(append(VT_OID, identifier.data(), 12), 0u);
    EXPECT_EQ(append(VT_OCTETS, bytes.data(), 2), 0u);
    EXPECT_EQ(append(VT_OCTETS, bytes.data(), 0), 0u);
    counter = 0;
    identifier = {};
    bytes = {};

    ASSERT_EQ(reply.values.size(), 5u);
    EXPECT_EQ(reply.values[0].number, 0xFFFFFFFEu);
    EXPECT_EQ(reply.values[1].number, 0x100000002u);
    EXPECT_EQ(reply.values[2].bytes.size(), 12u);
    EXPECT_EQ(reinterpret_cast<const std::uint32_t *>(reply.values[2].bytes.data())[2], 6u);
    EXPECT_EQ(reply.values[3].bytes[1], 8);
    EXPECT_TRUE(reply.values[4].bytes.empty());
    EXPECT_EQ(takeMisuse(), nullptr);
}

TEST_F(MessageLayer, takesIdentifiersFromAnyAddress)
{
    alignas(4) std::array<std::uint8_t, 9> bytes = {};
    const std::uint32_t subIds[] = {1, 3};
    std::copy_n(reinterpret_cast<const std::uint8_t *>(subIds), sizeof subIds, bytes.begin() + 1);
    EXPECT_EQ(append(VT_OID, bytes.data() + 1, 8), 0u);
    EXPECT_EQ(reinterpret_cast<const std::uint32_t *>(reply.values[0].bytes.data())[1], 3u);
}

TEST_F(MessageLayer, keepsTheLastError)
{
    MOR_SetMsgError(&reply, ERR_NO_INSTANCE, -1);
    MOR_SetMsgError(&reply, ERR_BAD_PARAM, 3);
    EXPECT_EQ(reply.error, ERR_BAD_PARAM);
    EXPECT_EQ(reply.errorPosition, 3);
    reply.begin();
    EXPECT_EQ(reply.error, 0u);
}

TEST_F(MessageLayer, refusesNullHandlesAndBuffers)
{
    std::uint32_t id = 0;
    std::uint8_t byte = 0;
    MorPara *parameter = MOR_GetParaFromMsgByMOR(&request, 0, 0x03720703);
    EXPECT_EQ(MOR_GetTableId(nullptr), 0u);
    expectMisuse("no request");
    EXPECT_EQ(MOR_GetMsgOpType(nullptr), 0u);
    expectMisuse("no request");
    EXPECT_EQ(MOR_GetParaFromMsgByMOR(nullptr, 0, 1), nullptr);
    expectMisuse("no request");
    EXPECT_EQ(MOR_GetData32(nullptr), 0u);
    expectMisuse("number");
    EXPECT_EQ(MOR_GetParaLen(nullptr), 0u);
    expectMisuse("no parameter");
    EXPECT_NE(MOR_GetDataFromPara(nullptr, 512, &byte), 0u);
    expectMisuse("nowhere");
    EXPECT_NE(MOR_GetDataFromPara(parameter, 512, nullptr), 0u);
    expectMisuse("nowhere");
    EXPECT_EQ(MOR_GetFirstParaFromMsg(nullptr, 0, &id), 0u);
    expectMisuse("nowhere");
    EXPECT_EQ(MOR_GetNextParaFromMsg(&request, 0, nullptr), 0u);
    expectMisuse("nowhere");
    EXPECT_NE(MOR_AppendPara2Msg(nullptr, 0, 1, VT_INTEGER, 1, 4), 0u);
    expectMisuse("no reply");
    EXPECT_NE(MOR_SetMsgError(nullptr, 1, -1), 0u);
    expectMisuse("no reply");
}

TEST_F(MessageLayer, refusesValuesThatAreNotWhatTheyClaim)
{
    EXPECT_EQ(MOR_GetData32(MOR_GetParaFromMsgByMOR(&request, 0, 0x03720703)), 0u);
    expectMisuse("number");
    EXPECT_NE(append(VT_INTEGER, 1, 8), 0u);
    expectMisuse("not 4");
    EXPECT_NE(append(VT_COUNTER64, 1, 4), 0u);
    expectMisuse("64-bit");
    EXPECT_NE(append(VT_COUNTER64, std::uintptr_t{0}, 8), 0u);
    expectMisuse("64-bit");
    EXPECT_NE(append(VT_OCTETS, std::uintptr_t{0}, 1), 0u);
    expectMisuse("nowhere");
    EXPECT_NE(append(VT_OCTETS, threeBytes, 65536), 0u);
    expectMisuse("too long");
    EXPECT_NE(append(VT_OID, threeBytes, 3), 0u);
    expectMisuse("multiple of 4");
    EXPECT_NE(append(4, 1, 4), 0u);
    expectMisuse("unknown type");
    EXPECT_NE(append(0xFFFFFFFF, 1, 4), 0u);
    expectMisuse("unknown type");
    EXPECT_TRUE(reply.values.empty());
}

TEST_F(MessageLayer, refusesMoreValuesThanAReplyHolds)
{
    for (std::size_t i = 0; i < maxReplyValues; ++i) {
        ASSERT_EQ(append(VT_COUNTER32, i, 4), 0u);
    }
    EXPECT_NE(append(VT_COUNTER32, 1, 4), 0u);
    expectMisuse("too many");
    EXPECT_EQ(reply.values.size(), maxReplyValues);
}

TEST_F(MessageLayer, refusesMoreOctetsThanAReplyHolds)
{
    const std::vector<std::uint8_t> large(maxOctets);
    for (std::size_t i = 0; i < maxReplyBytes / maxOctets; ++i) {
        ASSERT_EQ(append(VT_OCTETS, large.data(), maxOctets), 0u);
    }
    EXPECT_NE(append(VT_OCTETS, large.data(), maxOctets), 0u);
    expectMisuse("more octets");
    reply.begin();
    EXPECT_EQ(append(VT_OCTETS, large.data(), maxOctets), 0u);
}

TEST(ByteStoreTest, neverMovesWhatItHandedOut)
{
    ByteStore store;
    const std::vector<std::uint8_t> large(65535, 1);
    std::vector<std::span<const std::uint8_t>> kept;
    for (int i = 0; i < 10; ++i) {
        kept.push_back(store.keep(large.data(), large.size()));
        kept.push_back(store.keep(threeBytes, 3));
    }
    for (const auto bytes : kept) {
        EXPECT_EQ(bytes[0], 1);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(bytes.data()) % 8, 0u);
    }
    store.clear();
    EXPECT_EQ(store.keep(threeBytes, 3).data(), kept[0].data());
}

} // namespace
} // namespace ipmib::host
