// SPDX-License-Identifier: BSD-3-Clause
// The handlers of one packet share the data that hang on its request info, so a mark there tells whether this is the
// packet's first; as a sub-agent the same holds for a message of the master.

#include "packet.h"

#include "datagrams.h"

namespace ipmib::agent
{

void beginPacketOnce(host::Catalogue &catalogue, netsnmp_agent_request_info *info, bool isOfAnother)
{
    static constexpr const char *mark = "ipmib packet";
    static char marked;
    if (netsnmp_agent_get_list_data(info, mark) != nullptr) {
        return;
    }
    netsnmp_agent_add_list_data(info, netsnmp_create_data_list(mark, &marked, nullptr));
    if (Datagrams::all().packetBegins() || isOfAnother) {
        catalogue.beginPacket();
    }
}

} // namespace ipmib::agent
