// SPDX-License-Identifier: BSD-3-Clause
// Identifiers and values arrive in the library's variables with their type and every bit.

#include "varbind.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace ipmib::agent
{

namespace
{

using host::Value;
using host::ValueType;

struct FreeVariable {
    void operator()(netsnmp_variable_list *variable) const { snmp_free_varbind(variable); }
};
using Variable = std::unique_ptr<netsnmp_variable_list, FreeVariable>;

Variable emptyVariable()
{
    return Variable(SNMP_MALLOC_TYPEDEF(netsnmp_variable_list));
}

Variable holding(const Value &value)
{
    Variable variable = emptyVariable();
    setValue(*variable, value);
    return variable;
}

Value number(ValueType type, std::uint64_t value)
{
    return {type, value, {}, {}};
}

TEST(SetValue, Numbers)
{
    const struct {
        ValueType type;
        std::uint64_t value;
        u_char expectedType;
        long expected;
    } cases[] = {
        {ValueType::integer32, 7, ASN_INTEGER, 7},
        {ValueType::integer32, 0xFFFFFFFF, ASN_INTEGER, -1},
        {ValueType::unsigned32, 0xFFFFFFFF, ASN_UNSIGNED, 0xFFFFFFFF},
        {ValueType::counter32, 0xFFFFFFFE, ASN_COUNTER, 0xFFFFFFFE},
        {ValueType::timeTicks, 0x80000000, ASN_TIMETICKS, 0x80000000},
    };
    for (const auto &each : cases) {
        const Variable variable = holding(number(each.type, each.value));
        EXPECT_EQ(variable->type, each.expectedType);
        EXPECT_EQ(*variable->val.integer, each.expected);
    }
}

TEST(SetValue, Counter64InItsTwoHalves)
{
    const Variable variable = holding(number(ValueType::counter64, 0x123456789ABCDEF0));
    EXPECT_EQ(variable->type, ASN_COUNTER64);
    EXPECT_EQ(variable->val.counter64->high, 0x12345678u);
    EXPECT_EQ(variable->val.counter64->low, 0x9ABCDEF0u);
}

TEST(SetValue, OctetsWithZerosAndNoneAtAll)
{
    const std::uint8_t bytes[] = {0, 255, 0};
    const Variable three = holding({ValueType::octets, 0, bytes, {}});
    EXPECT_EQ(three->type, ASN_OCTET_STR);
    EXPECT_EQ(std::vector<std::uint8_t>(three->val.string, three->val.string + three->val_len),
              (std::vector<std::uint8_t>{0, 255, 0}));
    const Variable none = holding({ValueType::octets, 0, {}, {}});
    EXPECT_EQ(none->type, ASN_OCTET_STR);
    EXPECT_EQ(none->val_len, 0u);
}

TEST(SetValue, IdentifiersUpToTheLargestSubIdentifier)
{
    const host::SubId ids[] = {1, 3, 4294967295};
    const Variable variable = holding({ValueType::objectId, 0, {}, ids});
    EXPECT_EQ(variable->type, ASN_OBJECT_ID);
    EXPECT_EQ(std::vector<oid>(variable->val.objid, variable->val.objid + variable->val_len / sizeof(oid)),
              (std::vector<oid>{1, 3, 4294967295}));
}

TEST(Names, GoForthAndBack)
{
    const host::Oid name{1, 3, 6, 1, 2, 1, 5, 4294967295};
    const Variable variable = emptyVariable();
    setName(*variable, name.view());
    host::Oid back{9, 9};
    assignOid(back, {variable->name, variable->name_length});
    EXPECT_TRUE(std::ranges::equal(back.view(), name.view()));
}

} // namespace

} // namespace ipmib::agent
