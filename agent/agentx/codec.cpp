// SPDX-License-Identifier: BSD-3-Clause
// The library exports its AgentX code and declares it in none of its installed headers.

#include "agent/agentx/codec.h"

#include "agent/varbind.h"

#include <cstdlib>
#include <cstring>
#include <new>

extern "C" {
int agentx_parse(netsnmp_session *session, netsnmp_pdu *pdu, u_char *data, size_t length);
int agentx_realloc_build(netsnmp_session *session, netsnmp_pdu *pdu, u_char **buffer, size_t *capacity, size_t *length);
int agentx_check_packet(u_char *packet, size_t length);
}

namespace ipmib::agent::agentx
{

namespace
{

constexpr long agentxVersion = 0xC1; // as the library tells it from SNMP's
constexpr std::uint8_t versionOnTheWire = 1;
// Flags of the header.
constexpr u_long nonDefaultContext = 0x08;
constexpr u_long networkByteOrder = 0x10;

} // namespace

std::string textOfError(long code)
{
    static constexpr const char *names[] = {
        "openFailed",          "notOpen",           "indexWrongType",     "indexAlreadyAllocated",
        "indexNoneAvailable",  "indexNotAllocated", "unsupportedContext", "duplicateRegistration",
        "unknownRegistration", "unknownAgentCaps",  "parseError",         "requestDenied",
        "processingError"};
    constexpr long first = 256;
    const bool isKnown = code >= first && code < first + static_cast<long>(std::size(names));
    return std::string(isKnown ? names[code - first] : "error") + " (" + std::to_string(code) + ")";
}

Message makeMessage(MessageType type, long sessionId, long packetId)
{
    Message message(snmp_pdu_create(type));
    if (!message) {
        throw std::bad_alloc();
    }
    message->version = agentxVersion;
    message->flags = networkByteOrder;
    message->sessid = sessionId;
    message->transid = packetId;
    message->reqid = packetId;
    message->time = 0; // timeouts: the master's own
    return message;
}

void addIdentifier(netsnmp_pdu &message, host::OidView identifier)
{
    const LibraryOid converted(identifier);
    snmp_add_null_var(&message, converted.data(), converted.size());
}

// The library keeps it where SNMP's messages have their community.
void setContext(netsnmp_pdu &message, const std::string &context)
{
    if (!context.empty()) {
        message.flags |= nonDefaultContext;
        message.community = reinterpret_cast<u_char *>(strdup(context.c_str())); // the library frees it
        message.community_len = context.size();
    }
}

std::string contextOf(const netsnmp_pdu &message)
{
    const bool hasOne = (message.flags & nonDefaultContext) != 0 && message.community != nullptr;
    return hasOne ? std::string(reinterpret_cast<const char *>(message.community), message.community_len) : "";
}

void addText(netsnmp_pdu &message, const std::string &text)
{
    static constexpr oid none[] = {0, 0};
    snmp_pdu_add_variable(&message, none, std::size(none), ASN_OCTET_STR, text.data(), text.size());
}

void becomeResponse(netsnmp_pdu &message, long error, long errorIndex)
{
    if (error != noError) {
        snmp_free_varbind(message.variables);
        message.variables = nullptr;
    }
    message.command = responseMessage;
    message.flags &= ~nonDefaultContext; // which responses do not have
    message.time = 0;                    // the master's clock counts
    message.errstat = error;
    message.errindex = errorIndex;
}

Codec::Codec() : buffer_(nullptr, std::free)
{
    snmp_sess_init(&session_);
    session_.version = agentxVersion;
}

std::span<const std::uint8_t> Codec::encode(netsnmp_pdu &message)
{
    std::size_t length = 0;
    u_char *buffer = buffer_.release(); // it may move
    const int result = agentx_realloc_build(&session_, &message, &buffer, &capacity_, &length);
    buffer_.reset(buffer);
    return {buffer, result == 0 ? length : 0};
}

std::ptrdiff_t Codec::lengthOf(std::span<std::uint8_t> octets)
{
    if (!octets.empty() && octets.front() != versionOnTheWire) {
        return -1;
    }
    return agentx_check_packet(octets.data(), octets.size());
}

Message Codec::decode(std::span<std::uint8_t> octets)
{
    Message message(static_cast<netsnmp_pdu *>(std::calloc(1, sizeof(netsnmp_pdu))));
    if (!message || agentx_parse(&session_, message.get(), octets.data(), octets.size()) != SNMP_ERR_NOERROR) {
        return nullptr;
    }
    message->version = agentxVersion;
    return message;
}

} // namespace ipmib::agent::agentx
