// SPDX-License-Identifier: BSD-3-Clause
// The handler of a test's table.
#include "sorted_table.h"

#include "test_module.h"

#include <algorithm>

namespace ipmib::host::testing
{
namespace
{

constexpr std::uint32_t columnCount = 2;

bool isOctets(const TestSyntax &syntax)
{
    return syntax.type == MIB_TYPE_OCTETS || syntax.type == MIB_TYPE_IPADDRESS;
}

bool hasFixedLength(const TestSyntax &syntax)
{
    return syntax.type == MIB_TYPE_IPADDRESS ||
           (syntax.type == MIB_TYPE_OCTETS && syntax.ranges.front().lLow == syntax.ranges.front().lHigh);
}

std::uint32_t valueType(const TestSyntax &syntax)
{
    return isOctets(syntax) ? VT_OCTETS : syntax.type == MIB_TYPE_UNSIGNED32 ? VT_UNSIGNED32 : VT_INTEGER;
}

} // namespace

SortedTable::SortedTable(TestTree &tree, std::uint32_t id, const std::vector<TestSyntax> &index, Manners manners)
    : id_(id), index_(index), manners_(manners), entry_{1, id, 1}
{
    MibTreeNode &entry = tree.addTable(tree.root(), id, id, index);
    for (std::uint32_t i = 1; i <= columnCount; ++i) {
        tree.addColumn(entry, static_cast<std::uint32_t>(index.size()) + i, {MIB_TYPE_UNSIGNED32});
    }
}

void SortedTable::add(const Key &row)
{
    rows_[encode(row)] = row;
}

Identifier SortedTable::encode(const Key &key) const
{
    Identifier instance;
    for (std::size_t i = 0; i < key.size(); ++i) {
        if (isOctets(index_[i]) && !hasFixedLength(index_[i])) {
            instance.push_back(static_cast<SubId>(key[i].size()));
        }
        instance.insert(instance.end(), key[i].begin(), key[i].end());
    }
    return instance;
}

std::vector<Identifier> SortedTable::objects() const
{
    std::vector<Identifier> objects;
    for (std::uint32_t i = 1; i <= columnCount; ++i) {
        objects.push_back(entry_);
        objects.back().push_back(static_cast<SubId>(index_.size()) + i);
    }
    return objects;
}

std::vector<Identifier> SortedTable::instances() const
{
    std::vector<Identifier> instances;
    for (const Identifier &object : objects()) {
        for (const auto &[instance, row] : rows_) {
            instances.push_back(object);
            instances.back().insert(instances.back().end(), instance.begin(), instance.end());
        }
    }
    return instances;
}

SortedTable::Rows::const_iterator SortedTable::find(MorRequest *request) const
{
    const bool isGet = MOR_GetMsgOpType(request) == OP_GET;
    Key key;
    for (std::size_t i = 0; i < index_.size(); ++i) {
        MorPara *parameter = MOR_GetParaFromMsgByMOR(request, 0, parameterOfPart(i));
        if (!parameter) {
            return isGet ? rows_.end() : rows_.begin();
        }
        if (!isOctets(index_[i])) {
            key.push_back({MOR_GetData32(parameter)});
            continue;
        }
        std::uint8_t bytes[512];
        MOR_GetDataFromPara(parameter, sizeof bytes, bytes);
        key.emplace_back(bytes, bytes + std::min<std::uint32_t>(MOR_GetParaLen(parameter), sizeof bytes));
        if (!manners_.typePart || *manners_.typePart + 1 != i || isGet) {
            continue;
        }
        const SubId type = key[*manners_.typePart].front();
        const std::size_t expected = type == 2 ? 16 : type == 4 ? 20 : key[i].size();
        if (key[i].size() != expected) {
            const SubId padding = key[i].size() < expected ? 0 : 0xFF;
            key[i].assign(expected, padding);
            key.resize(index_.size(), {padding == 0 ? 0 : UINT32_MAX});
            break;
        }
    }
    if (manners_.refusesZero && key.front().front() == 0) {
        return rows_.end();
    }
    return isGet ? rows_.find(encode(key)) : rows_.upper_bound(encode(key));
}

std::uint32_t SortedTable::answer(MorRequest *request, MorReply *reply) const
{
    const bool isGet = MOR_GetMsgOpType(request) == OP_GET;
    const auto row = find(request);
    if (row == rows_.end()) {
        return fail(reply, isGet ? ERR_NO_INSTANCE : rows_.size() % 2 ? ERR_END_OF_TABLE : ERR_NEXT_FAILED);
    }
    for (std::size_t i = 0; !isGet && i < index_.size(); ++i) {
        const Part &part = row->second[i];
        if (isOctets(index_[i])) {
            const std::vector<std::uint8_t> bytes(part.begin(), part.end());
            MOR_AppendPara2Msg(reply, 0, parameterOfPart(i), VT_OCTETS, reinterpret_cast<std::uintptr_t>(bytes.data()),
                               static_cast<std::uint32_t>(bytes.size()));
        } else {
            append(reply, parameterOfPart(i), valueType(index_[i]), part.front());
        }
    }
    std::uint32_t parameter = 0;
    std::int32_t position = 0;
    for (std::uint32_t more = MOR_GetFirstParaFromMsg(request, 0, &parameter); more;
         more = MOR_GetNextParaFromMsg(request, 0, &parameter), ++position) {
        const std::uint32_t column = parameter - ip_ParamId(id_, 0);
        if (column < 1 || column > index_.size() + columnCount) {
            MOR_SetMsgError(reply, ERR_BAD_PARAM, position);
            return ERR_BAD_PARAM;
        }
        if (column > index_.size()) {
            append(reply, parameter, VT_UNSIGNED32, valueOf(parameter, row->first));
        }
    }
    return 0;
}

std::uint32_t SortedTable::valueOf(std::uint32_t parameter, const Identifier &instance)
{
    std::uint32_t value = parameter;
    for (const SubId id : instance) {
        value = value * 31 + id;
    }
    return value;
}

} // namespace ipmib::host::testing
