// SPDX-License-Identifier: BSD-3-Clause
// ipmibctl show: a view, once.
#include "commands.h"
#include "listing.h"
#include "view_names.h"

namespace ipmib::cli
{

int show(LocalDevice &device, const Options &options, const Words &words)
{
    const ViewRequest request = parseViewRequest("show", words);
    const Version version = options.version == Version::both ? request.version : options.version;
    const View &view = request.view == &countersView ? countersViewOf(version) : *request.view;
    Listing listing(view.columns, options); // complains about columns that there are not
    device.show(version);
    device.freshState();
    listRows(device, view, request, [&listing](Row row) { listing.add(std::move(row)); });
    listing.finish();
    return host::exitSuccess;
}

} // namespace ipmib::cli
