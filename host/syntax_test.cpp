// SPDX-License-Identifier: BSD-3-Clause
// Values leave as the tree declares them, or not at all.
#include "resolver.h"

#include "testing/identifiers.h"
#include "testing/test_module.h"
#include "testing/test_tree.h"

#include <gtest/gtest.h>

#include <optional>

namespace ipmib::host::testing
{
namespace
{

std::vector<std::string> logLines;

void log(int, const char *line)
{
    logLines.emplace_back(line);
}

struct ValueCase {
    const char *name;
    TestSyntax syntax;
    std::uint32_t type;
    std::vector<std::uint32_t> words; // a number, a counter's low and high half, octets or sub-identifiers
    std::optional<ValueType> expected;
};

const ValueCase valueCases[] = {
    {"counter32", {MIB_TYPE_COUNTER32}, VT_COUNTER32, {UINT32_MAX}, ValueType::counter32},
    {"counter64", {MIB_TYPE_COUNTER64}, VT_COUNTER64, {1, 2}, ValueType::counter64},
    {"counter64_as_counter32", {MIB_TYPE_COUNTER64}, VT_COUNTER32, {1}, std::nullopt},
    {"counter32_as_counter64", {MIB_TYPE_COUNTER32}, VT_COUNTER64, {1, 0}, std::nullopt},
    {"counter32_as_unsigned32", {MIB_TYPE_COUNTER32}, VT_UNSIGNED32, {1}, std::nullopt},
    {"time_ticks", {MIB_TYPE_TIMETICKS}, VT_TIMETICKS, {UINT32_MAX}, ValueType::timeTicks},
    {"time_ticks_as_integer", {MIB_TYPE_TIMETICKS}, VT_INTEGER, {1}, std::nullopt},
    {"integer_in_range", integer(-2, 9), VT_INTEGER, {0xFFFFFFFE}, ValueType::integer32},
    {"integer_below_range", integer(-2, 9), VT_INTEGER, {0xFFFFFFFD}, std::nullopt},
    {"integer_above_range", integer(-2, 9), VT_INTEGER, {10}, std::nullopt},
    {"integer_without_range", {MIB_TYPE_INTEGER32}, VT_INTEGER, {0x80000000}, ValueType::integer32},
    {"unsigned_in_range", unsigned32(1500, 65535), VT_UNSIGNED32, {65535}, ValueType::unsigned32},
    {"unsigned_out_of_range", unsigned32(1500, 65535), VT_UNSIGNED32, {UINT32_MAX}, std::nullopt},
    {"unsigned_without_range", unsigned32(), VT_UNSIGNED32, {UINT32_MAX}, ValueType::unsigned32},
    {"union_of_ranges", {MIB_TYPE_UNSIGNED32, {{0, 0}, {4, 9000}}}, VT_UNSIGNED32, {4}, ValueType::unsigned32},
    {"between_ranges", {MIB_TYPE_UNSIGNED32, {{0, 0}, {4, 9000}}}, VT_UNSIGNED32, {3}, std::nullopt},
    {"label", labels({-2, -1, 0, 1}), VT_INTEGER, {0xFFFFFFFE}, ValueType::integer32},
    {"no_label", labels({-2, -1, 0, 1}), VT_INTEGER, {2}, std::nullopt},
    {"octets", octets(0, 2), VT_OCTETS, {1, 2}, ValueType::octets},
    {"empty_octets", octets(0, 2), VT_OCTETS, {}, ValueType::octets},
    {"long_octets", octets(0, 2), VT_OCTETS, {1, 2, 3}, std::nullopt},
    {"short_octets", octets(2, 2), VT_OCTETS, {1}, std::nullopt},
    {"octets_as_identifier", octets(0, 8), VT_OID, {1, 3}, std::nullopt},
    {"ip_address", {MIB_TYPE_IPADDRESS}, VT_OCTETS, {127, 0, 0, 1}, ValueType::ipAddress},
    {"long_ip_address", {MIB_TYPE_IPADDRESS}, VT_OCTETS, {127, 0, 0, 1, 0}, std::nullopt},
    {"identifier", {MIB_TYPE_OID}, VT_OID, {1, 3, 6}, ValueType::objectId},
    {"empty_identifier", {MIB_TYPE_OID}, VT_OID, {}, std::nullopt},
    {"longest_identifier", {MIB_TYPE_OID}, VT_OID, std::vector<std::uint32_t>(128, 1), ValueType::objectId},
    {"too_long_identifier", {MIB_TYPE_OID}, VT_OID, std::vector<std::uint32_t>(129, 1), std::nullopt},
};

class Values : public ::testing::TestWithParam<ValueCase>
{
};

TEST_P(Values, leaveOnlyAsDeclared)
{
    const ValueCase &each = GetParam();
    logLines.clear();
    TestTree tree;
    tree.addScalar(tree.root(), 10, ip_ParamId(1, 1), each.syntax);
    TestModule module([&each](MorRequest *, MorReply *reply) {
        if (each.type == VT_OCTETS) {
            const std::vector<std::uint8_t> bytes(each.words.begin(), each.words.end());
            MOR_AppendPara2Msg(reply, 0, ip_ParamId(1, 1), each.type, reinterpret_cast<std::uintptr_t>(bytes.data()),
                               static_cast<std::uint32_t>(bytes.size()));
        } else if (each.type == VT_OID) {
            MOR_AppendPara2Msg(reply, 0, ip_ParamId(1, 1), each.type,
                               reinterpret_cast<std::uintptr_t>(each.words.data()),
                               static_cast<std::uint32_t>(4 * each.words.size()));
        } else if (each.type == VT_COUNTER64) {
            const std::uint64_t number = each.words[0] + (std::uint64_t{each.words[1]} << 32);
            MOR_AppendPara2Msg(reply, 0, ip_ParamId(1, 1), each.type, reinterpret_cast<std::uintptr_t>(&number), 8);
        } else {
            append(reply, ip_ParamId(1, 1), each.type, each.words[0]);
        }
        return 0u;
    });
    Resolver resolver(tree.root(), TestModule::callback, log);
    const Identifier asked{1, 10, 0};
    Variable variable;
    variable.asked = asked;
    resolver.get({&variable, 1});
    if (!each.expected) {
        EXPECT_EQ(variable.status, Status::genErr);
        ASSERT_EQ(logLines.size(), 1u);
        EXPECT_EQ(logLines[0], "scalar: the module's value is not of the declared syntax");
        return;
    }
    ASSERT_EQ(variable.status, Status::ok);
    EXPECT_EQ(variable.value.type, *each.expected);
    if (each.type == VT_OCTETS) {
        EXPECT_TRUE(std::ranges::equal(variable.value.octets, each.words));
    } else if (each.type == VT_OID) {
        EXPECT_TRUE(std::ranges::equal(variable.value.objectId, each.words));
    } else {
        EXPECT_EQ(variable.value.number,
                  each.type == VT_COUNTER64 ? std::uint64_t{0x200000001} : std::uint64_t{each.words[0]});
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, Values, ::testing::ValuesIn(valueCases),
                         [](const auto &each) { return std::string(each.param.name); });

} // namespace
} // namespace ipmib::host::testing
