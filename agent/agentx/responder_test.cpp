// SPDX-License-Identifier: BSD-3-Clause
// A master's messages and what they are answered with, from octets to octets.

#include "agent/agentx/responder.h"

#include "agent/varbind.h"

#include "host/testing/sorted_table.h"
#include "host/testing/test_module.h"

#include <gtest/gtest.h>

#include <deque>
#include <optional>

namespace ipmib::agent::agentx
{

namespace
{

using host::testing::Identifier;
using host::testing::SortedTable;

// A variable as a master asks for it.
struct Range {
    Identifier start;
    Identifier end = {};
    bool included = false;
};

// A variable of a response: its name and, where there is no value, what stands in its place.
struct Found {
    Identifier name;
    u_char exception = 0;

    bool operator==(const Found &) const = default;
};
[[maybe_unused]] void PrintTo(const Found &found, std::ostream *stream)
{
    *stream << host::testing::text(found.name) << " " << static_cast<int>(found.exception);
}

constexpr u_char nothing = SNMP_ENDOFMIBVIEW;

// Tables 1.20 and 1.22 of one index part and the columns 8 and 9 (as SortedTable has them), and 1.21 between them,
// which has no rows.
class ResponderTest : public testing::Test
{
  protected:
    ResponderTest()
        : module_([this](MorRequest *request, MorReply *reply) { return tableOf(request).answer(request, reply); })
    {
        for (const std::uint32_t id : {20u, 21u, 22u}) {
            tables_.emplace_back(tree_, id, std::vector{host::testing::integer(1, 99)}, SortedTable::Manners{});
        }
        tables_[0].add({{5}});
        tables_[0].add({{7}});
        tables_[2].add({{1}});
        resolver_.emplace(tree_.root(), host::testing::TestModule::callback, nullptr);
        host::Catalogue::Contents contents;
        contents.trees = {{&tree_.root(), {}}};
        contents.sources = {&*resolver_};
        catalogue_.emplace(contents);
        responder_.emplace(*catalogue_);
        for (const host::ServedTable &table : catalogue_->tables()) {
            served_.push_back(&table);
        }
        responder_->serve(served_);
        for (const SortedTable &table : tables_) {
            const auto instances = table.instances();
            instances_.insert(instances_.end(), instances.begin(), instances.end());
        }
        std::ranges::sort(instances_, std::less<>());
    }

    SortedTable &tableOf(MorRequest *request) { return tables_[MOR_GetTableId(request) - 20]; }

    static Message request(MessageType type, const std::vector<Range> &ranges)
    {
        Message message = makeMessage(type, 7, 99);
        for (const Range &range : ranges) {
            const LibraryOid start(range.start);
            const LibraryOid end(range.end);
            snmp_pdu_add_variable(message.get(), start.data(), start.size(),
                                  range.included ? ASN_PRIV_INCL_RANGE : ASN_PRIV_EXCL_RANGE, end.data(),
                                  end.size() * sizeof(oid));
        }
        return message;
    }

    // Over the wire and back.
    Message pass(netsnmp_pdu &message)
    {
        const auto octets = codec_.encode(message);
        EXPECT_FALSE(octets.empty());
        std::vector<std::uint8_t> copy(octets.begin(), octets.end());
        EXPECT_EQ(Codec::lengthOf(copy), static_cast<std::ptrdiff_t>(copy.size()));
        return codec_.decode(copy);
    }

    Message answer(Message message)
    {
        const Message received = pass(*message);
        if (!received || !responder_->answer(*received)) {
            return nullptr;
        }
        Message response = pass(*received);
        EXPECT_EQ(response->command, responseMessage);
        EXPECT_EQ(response->sessid, 7);
        EXPECT_EQ(response->reqid, 99);
        return response;
    }

    std::vector<Found> foundBy(Message message)
    {
        const Message response = answer(std::move(message));
        EXPECT_EQ(response->errstat, noError);
        std::vector<Found> found;
        for (auto *variable = response->variables; variable != nullptr; variable = variable->next_variable) {
            host::Oid name;
            assignOid(name, {variable->name, variable->name_length});
            const bool isException = variable->type >= SNMP_NOSUCHOBJECT && variable->type <= SNMP_ENDOFMIBVIEW;
            found.push_back(
                {Identifier(name.view().begin(), name.view().end()), isException ? variable->type : u_char{0}});
        }
        return found;
    }

    // What the range asks for.
    Found nextOf(const Range &range) const
    {
        for (const Identifier &instance : instances_) {
            const auto order = host::compare(instance, range.start);
            if ((std::is_gt(order) || (range.included && std::is_eq(order))) &&
                (range.end.empty() || std::is_lt(host::compare(instance, range.end)))) {
                return {instance};
            }
        }
        return {range.start, nothing};
    }

    host::testing::TestTree tree_;
    std::deque<SortedTable> tables_;
    host::testing::TestModule module_;
    std::optional<host::Resolver> resolver_;
    std::optional<host::Catalogue> catalogue_;
    std::vector<const host::ServedTable *> served_;
    std::optional<Responder> responder_;
    std::vector<Identifier> instances_;
    Codec codec_;
};

TEST_F(ResponderTest, GetFindsWhatIsThereAndSaysWhatIsNot)
{
    const Identifier there = instances_.front();
    Identifier otherRow = there;
    otherRow.back() = 6;
    EXPECT_EQ(foundBy(request(getMessage, {{there}, {otherRow}, {{1, 99, 1}}, {instances_.back()}})),
              (std::vector<Found>{
                  {there}, {otherRow, SNMP_NOSUCHINSTANCE}, {{1, 99, 1}, SNMP_NOSUCHOBJECT}, {instances_.back()}}));
}

TEST_F(ResponderTest, GetNextFindsTheFirstInEachRange)
{
    // From everything that is of interest to everything that is, also several in one message.
    std::vector<Identifier> bounds = {{1}, {1, 20}, {1, 20, 1}, {1, 21}, {1, 21, 1}, {1, 22, 1}, {1, 23}, {2}};
    for (const Identifier &instance : instances_) {
        bounds.push_back(instance);
        bounds.emplace_back(instance.begin(), instance.end() - 1);
        bounds.push_back(instance);
        bounds.back().push_back(0);
    }
    std::vector<Range> ranges;
    for (const Identifier &start : bounds) {
        for (const bool included : {false, true}) {
            ranges.push_back({start, {}, included});
            for (const Identifier &end : bounds) {
                ranges.push_back({start, end, included});
            }
        }
    }
    for (std::size_t i = 0; i < ranges.size(); i += 3) {
        const std::vector<Range> some(ranges.begin() + static_cast<std::ptrdiff_t>(i),
                                      ranges.begin() + static_cast<std::ptrdiff_t>(std::min(i + 3, ranges.size())));
        std::vector<Found> expected;
        for (const Range &range : some) {
            expected.push_back(nextOf(range));
        }
        EXPECT_EQ(foundBy(request(getNextMessage, some)), expected)
            << host::testing::text(some[0].start) << " to " << host::testing::text(some[0].end);
    }
}

TEST_F(ResponderTest, OnlyWhatIsServedIsThere)
{
    responder_->serve(std::span(served_).last(1));
    EXPECT_EQ(foundBy(request(getMessage, {{instances_.front()}, {instances_.back()}})),
              (std::vector<Found>{{instances_.front(), SNMP_NOSUCHOBJECT}, {instances_.back()}}));
    EXPECT_TRUE(std::is_eq(
        host::compare(foundBy(request(getNextMessage, {{{1}}})).front().name, tables_.back().instances().front())));
}

TEST_F(ResponderTest, GetBulkRepeatsTheLastVariables)
{
    Message message = request(getBulkMessage, {{{1}}, {{1}}, {{1, 22}}});
    message->non_repeaters = 1;
    message->max_repetitions = 3;
    const auto found = foundBy(std::move(message));
    std::vector<Found> expected = {nextOf({{1}}), nextOf({{1}}), nextOf({{1, 22}})};
    for (int repetition = 1; repetition < 3; ++repetition) {
        for (int variable = 0; variable < 2; ++variable) {
            const Found &before = expected[expected.size() - 2];
            expected.push_back(before.exception != 0 ? before : nextOf({before.name}));
        }
    }
    EXPECT_EQ(found, expected);
}

TEST_F(ResponderTest, GetBulkEndsWithTheLastRow)
{
    Message message = request(getBulkMessage, {{{1}}});
    message->non_repeaters = 0;
    message->max_repetitions = 30000;
    const auto found = foundBy(std::move(message));
    ASSERT_EQ(found.size(), instances_.size() + 1);
    EXPECT_EQ(found.back(), (Found{instances_.back(), nothing}));
}

TEST_F(ResponderTest, WritesAreRefused)
{
    Message test = makeMessage(testSetMessage, 7, 99);
    const LibraryOid name(instances_.front());
    const long value = 1;
    snmp_pdu_add_variable(test.get(), name.data(), name.size(), ASN_INTEGER, &value, sizeof value);
    const Message response = answer(std::move(test));
    EXPECT_EQ(response->errstat, SNMP_ERR_NOTWRITABLE);
    EXPECT_EQ(response->errindex, 1);
    EXPECT_EQ(answer(makeMessage(commitSetMessage, 7, 99))->errstat, processingError);
    EXPECT_EQ(answer(makeMessage(cleanupSetMessage, 7, 99)), nullptr);
}

TEST(AgentxCodec, WhatIsNoMessageIsTold)
{
    Codec codec;
    const auto octets = codec.encode(*makeMessage(getMessage, 1, 1));
    std::vector<std::uint8_t> whole(octets.begin(), octets.end());
    for (std::size_t length = 0; length < whole.size(); ++length) {
        std::vector<std::uint8_t> part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        const std::ptrdiff_t expected = Codec::lengthOf(part);
        EXPECT_TRUE(expected == 0 || expected > static_cast<std::ptrdiff_t>(length)) << length;
    }
    std::vector<std::uint8_t> otherVersion = whole;
    otherVersion[0] = 9;
    EXPECT_LT(Codec::lengthOf(otherVersion), 0);
    EXPECT_EQ(textOfError(263), "duplicateRegistration (263)");
    EXPECT_EQ(textOfError(4711), "error (4711)");
}

} // namespace

} // namespace ipmib::agent::agentx
