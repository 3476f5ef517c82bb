// SPDX-License-Identifier: BSD-3-Clause
// The services of a loaded platform library, by name.
#include "services.h"

namespace ipmib::portcheck
{

namespace
{

template <typename Function>
void bindOne(const host::SharedLibrary &library, const char *name, Function &function,
             std::vector<std::string> &missing)
{
    function = reinterpret_cast<Function>(const_cast<void *>(library.find(name)));
    if (function == nullptr) {
        missing.emplace_back(name);
    }
}

} // namespace

std::vector<std::string> Services::bind(const host::SharedLibrary &library)
{
    std::vector<std::string> missing;
#define IPMIB_SERVICE(name, ...) bindOne(library, #name, name, missing);
#include <ipmib/services.def>
#undef IPMIB_SERVICE
    return missing;
}

} // namespace ipmib::portcheck
