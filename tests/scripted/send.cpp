// SPDX-License-Identifier: BSD-3-Clause
// The one place of this library that names the module: a program that loads the module itself leaves this out.
#include "request.h"

#include <ipmib/module.h>

namespace ipmib::scripted
{

Reply Request::send() const
{
    return sendTo(IP_ConfigCallBack);
}

} // namespace ipmib::scripted
