// SPDX-License-Identifier: BSD-3-Clause
// The contexts that the platform has by itself: devices of a scenario, network namespaces.
#include "local_device.h"
#include "view.h"

namespace ipmib::cli
{
namespace
{

constexpr ListingColumn contextColumns[] = {
    {"CONTEXT", "context"},
    {"SHOWS", "argument"},
};

void listContexts(LocalDevice &device, const std::string &, const Sink &sink)
{
    for (const host::Instances::Context &context : device.contexts()) {
        sink({textCell(context.name), textCell(context.argument)});
    }
}

} // namespace

const View contextsView{"contexts", contextColumns, listContexts};

} // namespace ipmib::cli
