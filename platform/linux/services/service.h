// SPDX-License-Identifier: BSD-3-Clause
// What the service functions share.
#pragma once

#include "core/codes.h"
#include "linux_platform.h"

#include <ipmib/platform.h>
