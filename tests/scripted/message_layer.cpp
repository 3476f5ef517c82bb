// SPDX-License-Identifier: BSD-3-Clause
// The scripted message layer and registry: delivers parameters, captures values and errors, and complains about calls
// that break the message conventions.
#include "message_layer.h"

#include "state.h"

#include <algorithm>

using namespace ipmib::scripted;

namespace
{

void expectZero(const char *service, std::uint32_t zero)
{
    if (zero != 0) {
        complain(std::string(service) + ": the second argument is not 0");
    }
}

std::uint32_t deliver(const MorRequest &request, std::uint32_t *parameterId)
{
    if (request.place >= request.parameters.size()) {
        return 0;
    }
    *parameterId = request.parameters[request.place].parameter.id;
    return notExamined; // any number but 0 says that there is one
}

// What an address-valued append points at, read before the call returns.
template <typename Item>
std::vector<Item> itemsAt(std::uintptr_t address, std::uint32_t length)
{
    const auto *const first = reinterpret_cast<const Item *>(address);
    std::vector<Item> items(first, first + length / sizeof(Item));
    if (length % sizeof(Item) != 0) {
        complain("MOR_AppendPara2Msg: the length is no multiple of the item's size");
    }
    return items;
}

std::string treeCall(const char *service, const char *name, std::uint32_t zero, std::uint32_t one,
                     const MibTreeNode *root)
{
    return std::string(service) + "(" + name + ", " + number(zero) + ", " + number(one) + ", " + root->pszName + ")";
}

} // namespace

uint32_t SNMP_RegisterMibTree(const char *module_name, uint32_t zero, uint32_t one, const MibTreeNode *root)
{
    note([&] { return treeCall("SNMP_RegisterMibTree", module_name, zero, one, root); });
    world().registeredRoot = root;
    return world().registerTree;
}

uint32_t SNMP_DeregMibTree(const char *module_name, uint32_t zero, uint32_t one, const MibTreeNode *root)
{
    note([&] { return treeCall("SNMP_DeregMibTree", module_name, zero, one, root); });
    if (world().registeredRoot != nullptr && world().registeredRoot != root) {
        complain("SNMP_DeregMibTree: this root was not registered");
    }
    return world().deregisterTree;
}

uint32_t MOR_RegCallBack(uint32_t module_id, MorCallback callback)
{
    note([&] { return "MOR_RegCallBack(" + number(module_id) + ")"; });
    if (world().onRegisterCallback) {
        world().onRegisterCallback(callback);
    }
    return world().registerCallback;
}

uint32_t MOR_DeregCallBack(uint32_t module_id)
{
    note([&] { return "MOR_DeregCallBack(" + number(module_id) + ")"; });
    return world().deregisterCallback;
}

uint32_t MOR_GetTableId(MorRequest *request)
{
    note([] { return "MOR_GetTableId()"; });
    return request->table;
}

uint32_t MOR_GetMsgOpType(MorRequest *request)
{
    note([] { return "MOR_GetMsgOpType()"; });
    return request->operation;
}

MorPara *MOR_GetParaFromMsgByMOR(MorRequest *request, uint32_t zero, uint32_t parameter_id)
{
    note([&] { return "MOR_GetParaFromMsgByMOR(" + number(parameter_id) + ")"; });
    expectZero("MOR_GetParaFromMsgByMOR", zero);
    const auto found = std::find_if(request->parameters.begin(), request->parameters.end(),
                                    [parameter_id](const MorPara &each) { return each.parameter.id == parameter_id; });
    return found == request->parameters.end() ? nullptr : &*found;
}

uint32_t MOR_GetData32(MorPara *parameter)
{
    note([&] { return "MOR_GetData32(" + number(parameter->parameter.id) + ")"; });
    return parameter->parameter.number;
}

uint32_t MOR_GetParaLen(MorPara *parameter)
{
    note([&] { return "MOR_GetParaLen(" + number(parameter->parameter.id) + ")"; });
    return static_cast<std::uint32_t>(parameter->parameter.value.size());
}

uint32_t MOR_GetDataFromPara(MorPara *parameter, uint32_t capacity, void *buffer)
{
    note([&] { return "MOR_GetDataFromPara(" + number(parameter->parameter.id) + ", " + number(capacity) + ")"; });
    const Bytes &value = parameter->parameter.value;
    std::copy_n(value.begin(), std::min<std::size_t>(value.size(), capacity), static_cast<std::uint8_t *>(buffer));
    return notExamined;
}

uint32_t MOR_GetFirstParaFromMsg(MorRequest *request, uint32_t zero, uint32_t *parameter_id)
{
    note([] { return "MOR_GetFirstParaFromMsg()"; });
    expectZero("MOR_GetFirstParaFromMsg", zero);
    if (*parameter_id != 0xFFFFFFFF) {
        complain("MOR_GetFirstParaFromMsg: the parameter id did not start as 0xffffffff");
    }
    request->place = 0;
    return deliver(*request, parameter_id);
}

uint32_t MOR_GetNextParaFromMsg(MorRequest *request, uint32_t zero, uint32_t *parameter_id)
{
    note([] { return "MOR_GetNextParaFromMsg()"; });
    expectZero("MOR_GetNextParaFromMsg", zero);
    ++request->place;
    return deliver(*request, parameter_id);
}

uint32_t MOR_AppendPara2Msg(MorReply *reply, uint32_t zero, uint32_t parameter_id, uint32_t value_type, uintptr_t value,
                            uint32_t length)
{
    note([&] { return "MOR_AppendPara2Msg(" + number(parameter_id) + ")"; });
    expectZero("MOR_AppendPara2Msg", zero);
    const std::uint32_t column = parameter_id & 0xFF;
    if (parameter_id != ip_ParamId(reply->table, column)) {
        complain("MOR_AppendPara2Msg: " + number(parameter_id) + " is no column of the request's table");
    }
    Value appended = {column, value_type, 0, {}};
    std::uint32_t expectedLength = 4;
    switch (value_type) {
    case VT_OCTETS: {
        const auto bytes = itemsAt<std::uint8_t>(value, length);
        appended.items.assign(bytes.begin(), bytes.end());
        expectedLength = length;
        break;
    }
    case VT_OID:
        appended.items = itemsAt<std::uint32_t>(value, length);
        expectedLength = length;
        break;
    case VT_COUNTER64:
        std::memcpy(&appended.number, reinterpret_cast<const void *>(value), sizeof appended.number);
        expectedLength = 8;
        break;
    default:
        appended.number = value;
        if (value > UINT32_MAX) {
            complain("MOR_AppendPara2Msg: a 32-bit value is not zero-extended");
        }
    }
    if (length != expectedLength) {
        complain("MOR_AppendPara2Msg: length " + number(length) + " for value type " + number(value_type));
    }
    reply->reply.values.push_back(appended);
    state().answered.insert(parameter_id);
    return notExamined;
}

uint32_t MOR_SetMsgError(MorReply *reply, uint32_t error_code, int32_t position)
{
    note([&] { return "MOR_SetMsgError(" + number(error_code) + ", " + std::to_string(position) + ")"; });
    reply->reply.errors.emplace_back(error_code, position);
    return notExamined;
}
